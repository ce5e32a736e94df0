/// Trace messages by component and level.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace Trace {

class Handle {
  public:
    Handle(std::string name, std::uint16_t mask) : name_(std::move(name)), mask_(mask) {}

    std::string const& name() const noexcept { return name_; }
    std::uint16_t mask() const noexcept { return mask_.load(std::memory_order_relaxed); }
    void setMask(std::uint16_t mask) noexcept { mask_.store(mask, std::memory_order_relaxed); }
    bool enabled(unsigned level) const noexcept { return (mask() >> level & 1U) != 0; }

  private:
    std::string name_;
    std::atomic<std::uint16_t> mask_;
};

/// The handle of a component; it lives until the process ends. KELDA_TRACE is read when it is made.
Handle& handle(std::string_view name);

using Sink = std::function<void(std::string const& component, int level, std::string const& text)>;

/// Empty stands for the default sink.
Sink setSink(Sink sink);

/// Hands a message to the sink, one message at a time.
void emit(Handle const& handle, int level, std::string const& text);

template <class... Args>
void message(Handle const& handle, int level, fmt::format_string<Args...> format, Args&&... args) {
    emit(handle, level, fmt::format(format, std::forward<Args>(args)...));
}

} // namespace Trace

/// TRACE_MESSAGE(handle, level, format, argument...): arguments are evaluated only if level is on.
#define TRACE_MESSAGE(handle, level, ...)                                                          \
    do {                                                                                           \
        if (::Trace::Handle const& traced = (handle); traced.enabled(level))                       \
            ::Trace::message(traced, (level), __VA_ARGS__);                                        \
    } while (false)
