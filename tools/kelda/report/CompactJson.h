// Writes a JSON document without blanks that can stand in a page of HTML: no text in it can end the
// element that holds it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace KeldaTool {

class CompactJson {
  public:
    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginArray() { begin('['); }
    void endArray() { end(']'); }
    /// In an object; its value follows. The name is written as it is.
    void key(std::string_view name);

    void number(std::int64_t number);
    void boolean(bool value);
    /// A string of any bytes; such as are not UTF-8 are replaced. Besides what JSON wants escaped,
    /// "<", ">", "&" and the two line ends of Unicode are.
    void text(std::string_view bytes);
    /// A value that this class wrote.
    void written(std::string_view value);

    void number(std::string_view name, std::int64_t value) { key(name), number(value); }
    void boolean(std::string_view name, bool value) { key(name), boolean(value); }
    void text(std::string_view name, std::string_view bytes) { key(name), text(bytes); }
    void beginObject(std::string_view name) { key(name), beginObject(); }
    void beginArray(std::string_view name) { key(name), beginArray(); }

    /// What was written. All that was begun must have ended.
    std::string take() { return std::exchange(text_, {}); }

  private:
    void begin(char bracket);
    void end(char bracket);
    void nextItem();
    void character(char c);

    std::string text_;
    bool isBehindItem_ = false;
};

} // namespace KeldaTool
