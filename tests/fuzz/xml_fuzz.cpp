// XML escaping and the XML writer against a plain model that keeps the document as a list of
// strings.
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/fuzz_target.h"
#include "reply/xml_escape.h"
#include "reply/xml_writer.h"

namespace {

using namespace corvane;

std::string escaped(std::string_view text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&apos;";
                break;
            case '\0':
                break;
            default:
                out += c;
        }
    }
    return out;
}

void checkEscaping(std::string_view text) {
    const std::string expected = escaped(text);
    std::string appended = "before";
    appendEscaped(text, appended);
    fuzz::require(appended == "before" + expected, "text is appended escaped");
    std::ostringstream streamed;
    const std::string terminated(text);
    escapeXml(terminated.c_str(), static_cast<int>(text.size()), streamed);
    fuzz::require(streamed.str() == expected, "text is written escaped");
}

class Model {
  public:
    void start(const std::string& name) {
        closeTag();
        document_ += "<" + name;
        open_.push_back(name);
        inTag_ = true;
    }
    void end() {
        if (!open_.empty()) {
            document_ += inTag_ ? "/>" : "</" + open_.back() + ">";
            open_.pop_back();
            inTag_ = false;
        }
    }
    void attribute(const std::string& name, const std::string& value) {
        if (inTag_) {
            document_ += " " + name + "=\"" + escaped(value) + "\"";
        }
    }
    void text(const std::string& value) {
        closeTag();
        document_ += value;
    }
    void raw(const std::string& value) { document_ += value; }
    const std::string& document() const { return document_; }

  private:
    void closeTag() {
        document_ += inTag_ ? ">" : "";
        inTag_ = false;
    }

    std::string document_;
    std::vector<std::string> open_;
    bool inTag_ = false;
};

// An attribute in each of the writer's three ways to write one.
void attributeStep(unsigned way, const std::string& name, const std::string& value,
                   XmlWriter& writer, Model& model) {
    switch (way) {
        case 0:
            writer.attribute(name.c_str(), value.c_str());
            model.attribute(name, value);
            break;
        case 1:
            writer.attribute(name, value);
            if (!value.empty()) {
                model.attribute(name, value);
            }
            break;
        default:
            writer.attribute(name, static_cast<int>(name.size()));
            model.attribute(name, std::to_string(name.size()));
            break;
    }
}

// One operation of the writer, chosen and fed by the input.
void step(fuzz::Input& input, XmlWriter& writer, Model& model) {
    const unsigned operation = input.byte() % 10;
    const std::string a(input.field('\0'));
    switch (operation) {
        case 0:
            writer.startElement(a);
            model.start(a);
            break;
        case 1:
            writer.endElement();
            model.end();
            break;
        case 2:
        case 3:
            attributeStep(operation - 2, a, std::string(input.field('\0')), writer, model);
            break;
        case 4:
            attributeStep(operation - 2, a, "", writer, model);
            break;
        case 5:
        case 6:
            writer.text(a, operation == 5);
            model.text(operation == 5 ? escaped(a) : a);
            break;
        case 7:
            writer.escape(a.c_str());
            model.raw(escaped(a));
            break;
        case 8:
            writer.write(a.c_str());
            model.raw(a);
            break;
        default:
            writer.startElement(nullptr).text(nullptr, true).attribute(nullptr, 1);
            break;
    }
}

void checkWriter(std::string_view bytes) {
    std::string document;
    std::ostringstream streamed;
    XmlWriter toString(&document);
    XmlWriter toStream(&streamed);
    Model model;
    Model secondModel;
    fuzz::Input input(bytes);
    fuzz::Input secondInput(bytes);
    while (!input.empty()) {
        step(input, toString, model);
        step(secondInput, toStream, secondModel);
    }
    fuzz::require(document == model.document(), "the writer writes what the model expects");
    fuzz::require(streamed.str() == document, "a stream gets the same as a string");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::asText(data, size);
    checkEscaping(bytes);
    checkWriter(bytes);
    return 0;
}
