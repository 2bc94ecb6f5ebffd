#include "reply/xml_writer.h"

#include <cstring>

#include "reply/xml_escape.h"

namespace corvane {

XmlWriter& XmlWriter::startElement(const char* name) {
    if (name == nullptr) {
        return *this;
    }
    closeStartTag();
    write('<').write(name);
    openElements_.emplace(name);
    startTagOpen_ = true;
    return *this;
}

XmlWriter& XmlWriter::startElement(const std::string& name) { return startElement(name.c_str()); }

XmlWriter& XmlWriter::endElement() {
    if (openElements_.empty()) {
        return *this;
    }
    if (startTagOpen_) {
        write("/>");
    } else {
        write("</").write(openElements_.top().c_str()).write('>');
    }
    openElements_.pop();
    startTagOpen_ = false;
    return *this;
}

XmlWriter& XmlWriter::attribute(const char* name, const char* value) {
    if (!startTagOpen_ || name == nullptr || value == nullptr) {
        return *this;
    }
    return write(' ').write(name).write("=\"").escape(value).write('"');
}

XmlWriter& XmlWriter::attribute(const char* name, int value) {
    return attribute(name, std::to_string(value).c_str());
}

XmlWriter& XmlWriter::attribute(const std::string& name, int value) {
    return attribute(name.c_str(), value);
}

XmlWriter& XmlWriter::attribute(const char* name, const std::string& value) {
    return value.empty() ? *this : attribute(name, value.c_str());
}

XmlWriter& XmlWriter::attribute(const std::string& name, const std::string& value) {
    return attribute(name.c_str(), value);
}

XmlWriter& XmlWriter::text(const char* text, bool escaped) {
    if (text == nullptr) {
        return *this;
    }
    closeStartTag();
    return escaped ? escape(text) : write(text);
}

XmlWriter& XmlWriter::text(const std::string& text, bool escaped) {
    return this->text(text.c_str(), escaped);
}

XmlWriter& XmlWriter::escape(const char* text) {
    if (text != nullptr) {
        escapeXml(text, static_cast<int>(std::strlen(text)), stream_, string_);
    }
    return *this;
}

XmlWriter& XmlWriter::write(const char* text) {
    if (text != nullptr) {
        writeStringN(stream_, string_, text, static_cast<int>(std::strlen(text)));
    }
    return *this;
}

XmlWriter& XmlWriter::write(char c) {
    writeStringN(stream_, string_, &c, 1);
    return *this;
}

void XmlWriter::closeStartTag() {
    if (startTagOpen_) {
        write('>');
        startTagOpen_ = false;
    }
}

}  // namespace corvane
