#include <Trace/Trace.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>

namespace Trace {

namespace {

// The part of `list` before the first `separator`; the list loses both.
std::string_view takeFirst(std::string_view& list, char separator) {
    auto const first = list.substr(0, list.find(separator));
    list.remove_prefix(std::min(first.size() + 1, list.size()));
    return first;
}

// 16 and more stand for no level.
unsigned levelOf(std::string_view text) {
    unsigned level = 0;
    auto const* const end = text.data() + text.size();
    auto const read = std::from_chars(text.data(), end, level);
    return read.ec == std::errc() && read.ptr == end ? level : 16;
}

// The levels of a list such as "0-4,8".
std::uint16_t maskOf(std::string_view list) {
    unsigned mask = 0;
    while (!list.empty()) {
        auto last = takeFirst(list, ',');
        auto const first = takeFirst(last, '-');
        auto const end = last.empty() ? levelOf(first) : levelOf(last);
        for (auto level = levelOf(first); level <= end && end < 16; ++level)
            mask |= 1U << level;
    }
    return static_cast<std::uint16_t>(mask);
}

std::uint16_t maskFromOutside(std::string_view component) {
    char const* const setting = std::getenv("KELDA_TRACE");
    std::string_view parts = setting == nullptr ? "" : setting;
    unsigned mask = 0;
    while (!parts.empty()) {
        auto levels = takeFirst(parts, ';');
        if (takeFirst(levels, '=') == component)
            mask |= maskOf(levels);
    }
    return static_cast<std::uint16_t>(mask);
}

struct State {
    std::mutex handleMutex;
    std::map<std::string, Handle, std::less<>> handles;
    std::mutex sinkMutex;
    Sink sink;
};

// Never destroyed: destructors of static variables trace too.
State& state() {
    static auto& state = *new State;
    return state;
}

} // namespace

Handle& handle(std::string_view name) {
    std::scoped_lock const lock(state().handleMutex);
    auto const found = state().handles.find(name);
    if (found != state().handles.end())
        return found->second;
    std::string const key(name);
    return state().handles.try_emplace(key, key, maskFromOutside(name)).first->second;
}

Sink setSink(Sink sink) {
    std::scoped_lock const lock(state().sinkMutex);
    return std::exchange(state().sink, std::move(sink));
}

void emit(Handle const& handle, int level, std::string const& text) {
    std::scoped_lock const lock(state().sinkMutex);
    if (state().sink)
        state().sink(handle.name(), level, text);
    else
        std::fprintf(stderr, "%s[%d] %s\n", handle.name().c_str(), level, text.c_str());
}

} // namespace Trace
