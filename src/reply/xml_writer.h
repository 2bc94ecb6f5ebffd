// A small streaming writer for XML text. It keeps the open elements, so that endElement() needs no
// name, and closes a start tag lazily: an element without content becomes an empty-element tag. It
// writes no indentation, line breaks or declaration. A provided interface that the program itself
// does not call: its replies are put together by ReplyDocument.
#pragma once

#include <deque>
#include <ostream>
#include <stack>
#include <string>

namespace corvane {

/// All operations return the writer, so that calls can be chained. A null pointer in place of a
/// text does nothing.
class XmlWriter {
  public:
    /// The target is not owned; text is appended to it.
    explicit XmlWriter(std::string* target) : string_(target) {}
    explicit XmlWriter(std::ostream* target) : stream_(target) {}

    XmlWriter& startElement(const char* name);
    XmlWriter& startElement(const std::string& name);
    /// Does nothing when no element is open.
    XmlWriter& endElement();

    /// Adds an escaped attribute to the start tag; after text or a child element it does nothing. A
    /// value given as std::string is left out when it is empty, one given as characters is not.
    XmlWriter& attribute(const char* name, const char* value);
    XmlWriter& attribute(const char* name, int value);
    XmlWriter& attribute(const std::string& name, int value);
    XmlWriter& attribute(const char* name, const std::string& value);
    XmlWriter& attribute(const std::string& name, const std::string& value);

    XmlWriter& text(const char* text, bool escaped);
    XmlWriter& text(const std::string& text, bool escaped);

    /// Writes the text escaped, without regard to open tags.
    XmlWriter& escape(const char* text);
    /// Writes as it is, without regard to open tags.
    XmlWriter& write(const char* text);
    XmlWriter& write(char c);

  private:
    void closeStartTag();

    std::stack<std::string, std::deque<std::string>> openElements_;
    std::ostream* stream_ = nullptr;
    std::string* string_ = nullptr;
    bool startTagOpen_ = false;
};

}  // namespace corvane
