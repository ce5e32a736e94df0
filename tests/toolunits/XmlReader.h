// Reads an XML document of elements, attributes and text, and refuses what is not well-formed.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Text.h"

namespace toolunits {

struct XmlElement {
    std::string name;
    std::map<std::string, std::string> attributes;
    std::string text; // of the element itself
    std::vector<XmlElement> children;

    std::vector<XmlElement> named(std::string_view wanted) const {
        std::vector<XmlElement> found;
        for (auto const& child : children)
            if (child.name == wanted)
                found.push_back(child);
        return found;
    }
};

class XmlReader {
  public:
    // The root element; throws when the document is not well-formed.
    static XmlElement read(std::string_view document) {
        refuseForbiddenCharacters(document);
        XmlReader reader(document);
        reader.expect("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
        reader.skipBlanks();
        auto root = reader.element();
        reader.skipBlanks();
        reader.require(reader.rest_.empty(), "text behind the root element");
        return root;
    }

  private:
    explicit XmlReader(std::string_view document) : rest_(document) {}

    static void require(bool holds, std::string const& what) {
        if (!holds)
            throw std::runtime_error("not well-formed: " + what);
    }
    static void refuseForbiddenCharacters(std::string_view document) {
        require(KeldaTool::replaceNonUtf8(document) == document, "not UTF-8");
        for (char const c : document)
            require(static_cast<unsigned char>(c) >= 0x20 || c == '\n' || c == '\t', "control");
        for (std::string_view const none : {"\xef\xbf\xbe", "\xef\xbf\xbf"})
            require(document.find(none) == std::string_view::npos, "no character");
    }
    void expect(std::string_view what) {
        require(rest_.starts_with(what), std::string(what));
        rest_.remove_prefix(what.size());
    }
    bool accept(std::string_view what) {
        bool const is = rest_.starts_with(what);
        if (is)
            rest_.remove_prefix(what.size());
        return is;
    }
    void skipBlanks() {
        while (!rest_.empty() && (rest_[0] == ' ' || rest_[0] == '\n'))
            rest_.remove_prefix(1);
    }
    std::string_view upTo(std::string_view ends) {
        auto const end = rest_.find_first_of(ends);
        require(end != std::string_view::npos, "no end");
        auto const piece = rest_.substr(0, end);
        rest_.remove_prefix(end);
        return piece;
    }
    std::string name() {
        auto const word = upTo(" =/>\n<&\"");
        require(!word.empty(), "no name");
        return std::string(word);
    }
    // Content up to one of the ends, in which "<" and ">" do not stand, with its entities replaced.
    std::string content(std::string_view ends) {
        std::string text;
        for (auto piece = upTo(ends); !piece.empty();) {
            auto const entity = piece.find('&');
            text += piece.substr(0, entity);
            if (entity == std::string_view::npos)
                break;
            auto const end = piece.find(';', entity);
            require(end != std::string_view::npos, "&");
            text += characterOf(piece.substr(entity, end + 1 - entity));
            piece.remove_prefix(end + 1);
        }
        return text;
    }
    static char characterOf(std::string_view entity) {
        static std::map<std::string_view, char> const characters = {
            {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}};
        auto const found = characters.find(entity);
        require(found != characters.end(), std::string(entity));
        return found->second;
    }
    void readAttribute(XmlElement& element) {
        auto const key = name();
        expect("=\"");
        require(element.attributes.emplace(key, content("\"<>\n")).second, "attribute twice");
        expect("\"");
    }
    XmlElement element() {
        XmlElement element;
        expect("<");
        element.name = name();
        while (accept(" "))
            readAttribute(element);
        if (accept("/>"))
            return element;
        expect(">");
        for (;;) {
            element.text += content("<>");
            if (accept("</"))
                break;
            element.children.push_back(this->element());
        }
        expect(element.name);
        expect(">");
        return element;
    }

    std::string_view rest_;
};

} // namespace toolunits
