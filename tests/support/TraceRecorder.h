// Records the trace messages of one component while it lives.
#pragma once

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <Trace/Trace.h>

namespace support {

struct TraceLine {
    int level;
    std::string text;

    friend bool operator==(TraceLine const&, TraceLine const&) = default;
    friend std::ostream& operator<<(std::ostream& stream, TraceLine const& line) {
        return stream << line.level << ": " << line.text;
    }
};

class TraceRecorder {
  public:
    // Switches on the levels whose bits are set in `mask` (all by default).
    explicit TraceRecorder(std::string_view component = "MountFileInfo",
                           std::uint16_t mask = 0xffff)
        : handle_(Trace::handle(component)), oldMask_(handle_.mask()) {
        oldSink_ =
            Trace::setSink([this](std::string const& from, int level, std::string const& text) {
                if (from == handle_.name())
                    lines_.push_back({level, text});
            });
        handle_.setMask(mask);
    }
    ~TraceRecorder() {
        handle_.setMask(oldMask_);
        Trace::setSink(oldSink_);
    }
    TraceRecorder(TraceRecorder const&) = delete;
    TraceRecorder& operator=(TraceRecorder const&) = delete;

    std::vector<TraceLine> const& lines() const { return lines_; }
    void clear() { lines_.clear(); }

    // How often this very message came at this level.
    long count(int level, std::string_view text) const {
        return std::count(lines_.begin(), lines_.end(), TraceLine{level, std::string(text)});
    }
    bool has(int level, std::string_view text) const { return count(level, text) > 0; }

    // All messages of one level, in order.
    std::vector<std::string> at(int level) const {
        std::vector<std::string> texts;
        for (auto const& line : lines_)
            if (line.level == level)
                texts.push_back(line.text);
        return texts;
    }

  private:
    Trace::Handle& handle_;
    std::uint16_t oldMask_;
    Trace::Sink oldSink_;
    std::vector<TraceLine> lines_;
};

} // namespace support
