// Writes a JSON document piece by piece, for answers that would be large as a tree of values. The
// text is that of documentText.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "JsonDocument.h"

namespace KeldaTool {

class JsonWriter {
  public:
    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginArray() { begin('['); }
    void endArray() { end(']'); }
    /// In an object; its value follows. The name is written as it is.
    void key(std::string_view name);
    /// A value without members of its own.
    void value(Json const& scalar);
    void member(std::string_view name, Json const& scalar);

    /// The document, ended by a newline. All that was begun must have ended.
    std::string take();

  private:
    void begin(char bracket);
    void end(char bracket);
    void nextItem();
    void newLine();

    std::string text_;
    std::vector<bool> hasItems_; // of what has begun and not ended
    bool isBehindKey_ = false;
};

} // namespace KeldaTool
