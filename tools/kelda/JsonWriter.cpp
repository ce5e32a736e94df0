#include "JsonWriter.h"

#include <utility>

namespace KeldaTool {
namespace {

constexpr std::size_t indentation = 2;

} // namespace

void JsonWriter::newLine() {
    text_ += '\n';
    text_.append(hasItems_.size() * indentation, ' ');
}

void JsonWriter::nextItem() {
    if (std::exchange(isBehindKey_, false) || hasItems_.empty())
        return;
    if (hasItems_.back())
        text_ += ',';
    hasItems_.back() = true;
    newLine();
}

void JsonWriter::begin(char bracket) {
    nextItem();
    text_ += bracket;
    hasItems_.push_back(false);
}

void JsonWriter::end(char bracket) {
    bool const hadItems = hasItems_.back();
    hasItems_.pop_back();
    if (hadItems)
        newLine();
    text_ += bracket;
}

void JsonWriter::key(std::string_view name) {
    nextItem();
    text_ += '"';
    text_ += name;
    text_ += "\": ";
    isBehindKey_ = true;
}

void JsonWriter::value(Json const& scalar) {
    nextItem();
    text_ += scalar.dump();
}

void JsonWriter::member(std::string_view name, Json const& scalar) {
    key(name);
    value(scalar);
}

std::string JsonWriter::take() {
    text_ += '\n';
    return std::exchange(text_, {});
}

} // namespace KeldaTool
