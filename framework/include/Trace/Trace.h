/// @file
/// Trace messages by component and level.
///
/// A component has 16 levels, switched on and off one by one by a mask: level N is on when bit N
/// is. All are off at first. The environment variable KELDA_TRACE switches levels on from outside
/// when a component is first named, as in
///
///     KELDA_TRACE=MountFileInfo=0-4,8;MountFileInfoWrap=5
///
/// (components separated by ";", each with levels and ranges of levels separated by ","). A part
/// that cannot be read is named on standard error and left out.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include <Fen/Export.h>

/// Trace messages by component and level.
namespace Trace {

/// A component's name and mask. Any thread may read and set the mask.
class Handle {
  public:
    /// A handle that handle() does not know.
    Handle(std::string name, std::uint16_t mask) : name_(std::move(name)), mask_(mask) {}
    Handle(Handle const&) = delete;
    Handle& operator=(Handle const&) = delete;

    /// The component's name.
    std::string const& name() const noexcept { return name_; }
    /// The levels that are on: bit N for level N.
    std::uint16_t mask() const noexcept { return mask_.load(std::memory_order_relaxed); }
    /// Switches exactly these levels on.
    void setMask(std::uint16_t mask) noexcept { mask_.store(mask, std::memory_order_relaxed); }
    /// Whether `level`, 0 to 15, is on.
    bool enabled(unsigned level) const noexcept { return (mask() >> level & 1U) != 0; }

  private:
    std::string const name_;
    std::atomic<std::uint16_t> mask_;
};

/// The handle of a component, made when it is first asked for; it lives until the process ends.
FEN_API Handle& handle(std::string_view name);

/// Where messages go: the component's name, the level, the text without a line end.
using Sink = std::function<void(std::string const& component, int level, std::string const& text)>;

/// Replaces the sink and returns the former one. An empty sink stands for the default, which writes
/// "COMPONENT LEVEL: TEXT" lines to standard error. Sinks are called one at a time; a sink must not
/// call setSink, and what it traces itself is dropped.
FEN_API Sink setSink(Sink sink);

/// Formats a message and hands it to the sink; use TRACE_MESSAGE, which checks the level first.
FEN_API void emit(Handle const& handle, unsigned level, fmt::string_view format,
                  fmt::format_args args);

/// As emit, with the arguments themselves; the format is checked when it is compiled.
template <class... Args>
void message(Handle const& handle, unsigned level, fmt::format_string<Args...> format,
             Args&&... args) {
    emit(handle, level, format, fmt::make_format_args(args...));
}

} // namespace Trace

/// Traces a message: TRACE_MESSAGE(handle, level, "( path : {} )", path). While the level is off it
/// costs one load and one branch: the arguments are not evaluated.
#define TRACE_MESSAGE(handle, level, ...)                                                          \
    do {                                                                                           \
        if (::Trace::Handle const& traceHandle = (handle); traceHandle.enabled(level))             \
            [[unlikely]]                                                                           \
            ::Trace::message(traceHandle, (level), __VA_ARGS__);                                   \
    } while (false)
