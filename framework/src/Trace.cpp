#include <Trace/Trace.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace Trace {

namespace {

constexpr unsigned levels = 16;

// A line that standard error does not take is lost: tracing never fails.
void writeLine(std::string const& text) {
    std::fputs((text + "\n").c_str(), stderr);
}

// Cuts `text` at the first `separator`: returns what stands before it and leaves what follows.
std::string_view cut(std::string_view& text, char separator) {
    auto const end = text.find(separator);
    auto const head = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    return head;
}

std::optional<unsigned> level(std::string_view text) {
    unsigned value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value >= levels)
        return std::nullopt;
    return value;
}

// The mask of "3" or "0-4".
std::optional<std::uint16_t> maskOfRange(std::string_view text) {
    bool const isRange = text.find('-') != std::string_view::npos;
    auto const first = level(cut(text, '-'));
    auto const last = isRange ? level(text) : first;
    if (!first || !last || *first > *last)
        return std::nullopt;
    return static_cast<std::uint16_t>((2U << *last) - (1U << *first));
}

// The mask of "0-4,8"; parts that cannot be read are named on standard error.
std::uint16_t maskOfLevels(std::string_view component, std::string_view text) {
    std::uint16_t mask = 0;
    while (!text.empty()) {
        auto const part = cut(text, ',');
        if (auto const range = maskOfRange(part))
            mask = static_cast<std::uint16_t>(mask | *range);
        else
            writeLine(fmt::format("KELDA_TRACE: no trace level: '{}' of component '{}'", part,
                                  component));
    }
    return mask;
}

std::uint16_t maskFromEnvironment(std::string_view component) {
    char const* const value = std::getenv("KELDA_TRACE");
    std::string_view rest = value == nullptr ? "" : value;
    std::uint16_t mask = 0;
    while (!rest.empty()) {
        auto entry = cut(rest, ';');
        if (cut(entry, '=') != component)
            continue;
        if (entry.empty())
            writeLine(fmt::format("KELDA_TRACE: no trace level: '' of component '{}'", component));
        mask = static_cast<std::uint16_t>(mask | maskOfLevels(component, entry));
    }
    return mask;
}

// All handles and the sink; never destroyed, since static objects may trace while the process ends.
struct Registry {
    std::mutex handlesMutex;
    std::map<std::string, std::unique_ptr<Handle>, std::less<>> handles;
    std::mutex sinkMutex;
    Sink sink;
};

Registry& registry() {
    static auto& instance = *new Registry;
    return instance;
}

} // namespace

Handle& handle(std::string_view name) {
    auto& all = registry();
    std::lock_guard const lock(all.handlesMutex);
    auto const found = all.handles.find(name);
    if (found != all.handles.end())
        return *found->second;
    auto made = std::make_unique<Handle>(std::string(name), maskFromEnvironment(name));
    return *all.handles.emplace(std::string(name), std::move(made)).first->second;
}

Sink setSink(Sink sink) {
    auto& all = registry();
    std::lock_guard const lock(all.sinkMutex);
    return std::exchange(all.sink, std::move(sink));
}

void emit(Handle const& handle, unsigned level, fmt::string_view format, fmt::format_args args) {
    // A sink that traces itself would wait for its own end, or never come to it.
    thread_local bool inSink = false;
    if (inSink)
        return;
    auto const text = fmt::vformat(format, args);
    auto& all = registry();
    std::lock_guard const lock(all.sinkMutex);
    if (!all.sink) {
        writeLine(fmt::format("{} {}: {}", handle.name(), level, text));
        return;
    }
    struct Within {
        Within() { inSink = true; }
        ~Within() { inSink = false; }
    } const within;
    all.sink(handle.name(), static_cast<int>(level), text);
}

} // namespace Trace
