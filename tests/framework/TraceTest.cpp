// Trace messages: components, levels and the sink.
#include <Trace/Trace.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <Rook/String.h>

#include "support/CapturedStandardError.h"
#include "support/EnvironmentVariable.h"
#include "support/FreshComponent.h"
#include "support/Threads.h"
#include "support/TraceRecorder.h"

namespace {

using support::CapturedStandardError;
using support::EnvironmentVariable;
using support::freshComponent;
using support::TraceLine;
using support::TraceRecorder;
using testing::ElementsAre;

// Puts a sink in place while it lives.
class ScopedSink {
  public:
    explicit ScopedSink(Trace::Sink sink) : former_(Trace::setSink(std::move(sink))) {}
    ~ScopedSink() { Trace::setSink(std::move(former_)); }
    ScopedSink(ScopedSink const&) = delete;
    ScopedSink& operator=(ScopedSink const&) = delete;

  private:
    Trace::Sink former_;
};

class TraceTest : public testing::Test {
  protected:
    EnvironmentVariable const unset_{"KELDA_TRACE", nullptr};
};

// --- handles ---

TEST_F(TraceTest, AComponentHasOneHandle) {
    auto const name = freshComponent();
    auto& handle = Trace::handle(name);
    EXPECT_EQ(&Trace::handle(name), &handle);
    EXPECT_NE(&Trace::handle(freshComponent()), &handle);
    EXPECT_EQ(handle.name(), name);
}

TEST_F(TraceTest, AllLevelsAreOffAtFirst) {
    auto const& handle = Trace::handle(freshComponent());
    EXPECT_EQ(handle.mask(), 0);
    for (unsigned level = 0; level < 16; ++level)
        EXPECT_FALSE(handle.enabled(level)) << level;
}

TEST_F(TraceTest, LevelNIsOnWhenBitNIs) {
    auto& handle = Trace::handle(freshComponent());
    for (unsigned on = 0; on < 16; ++on) {
        handle.setMask(static_cast<std::uint16_t>(1U << on));
        EXPECT_EQ(handle.mask(), 1U << on);
        for (unsigned level = 0; level < 16; ++level)
            EXPECT_EQ(handle.enabled(level), level == on) << level << " with bit " << on;
    }
}

TEST_F(TraceTest, TheMaskOfOneComponentLeavesOthersAlone) {
    auto& first = Trace::handle(freshComponent());
    auto const& second = Trace::handle(freshComponent());
    first.setMask(0xffff);
    EXPECT_EQ(second.mask(), 0);
}

// --- messages ---

TEST_F(TraceTest, AMessageIsFormattedAndHandedOverWithItsLevel) {
    auto const name = freshComponent();
    TraceRecorder const recorder(name);
    TRACE_MESSAGE(Trace::handle(name), 7, "( path : {}, isExplicit : {} )", "a/b", true);
    TRACE_MESSAGE(Trace::handle(name), 3, "Returning {}", Rook::String("hardware/fan"));
    TRACE_MESSAGE(Trace::handle(name), 15, "no arguments, a {{brace}}");
    EXPECT_THAT(recorder.lines(), ElementsAre(TraceLine{7, "( path : a/b, isExplicit : true )"},
                                              TraceLine{3, "Returning hardware/fan"},
                                              TraceLine{15, "no arguments, a {brace}"}));
}

TEST_F(TraceTest, OnlyLevelsThatAreOnReachTheSink) {
    auto const name = freshComponent();
    TraceRecorder const recorder(name, 0x8105);
    for (unsigned level = 0; level < 16; ++level)
        TRACE_MESSAGE(Trace::handle(name), level, "level {}", level);
    EXPECT_THAT(recorder.lines(), ElementsAre(TraceLine{0, "level 0"}, TraceLine{2, "level 2"},
                                              TraceLine{8, "level 8"}, TraceLine{15, "level 15"}));
}

TEST_F(TraceTest, ASwitchedOffTraceEvaluatesNothing) {
    auto& handle = Trace::handle(freshComponent());
    handle.setMask(0xfffe);
    int evaluations = 0;
    TRACE_MESSAGE(handle, 0, "{}", ++evaluations);
    EXPECT_EQ(evaluations, 0);
}

TEST_F(TraceTest, ASwitchedOnTraceEvaluatesItsArgumentsOnce) {
    auto const name = freshComponent();
    TraceRecorder const recorder(name);
    int evaluations = 0;
    TRACE_MESSAGE(Trace::handle(name), 0, "{}", ++evaluations);
    EXPECT_EQ(evaluations, 1);
    EXPECT_THAT(recorder.at(0), ElementsAre("1"));
}

TEST_F(TraceTest, ATraceIsOneStatement) {
    auto const name = freshComponent();
    TraceRecorder const recorder(name);
    for (bool const first : {true, false})
        if (first)
            TRACE_MESSAGE(Trace::handle(name), 1, "first");
        else
            TRACE_MESSAGE(Trace::handle(name), 1, "second");
    EXPECT_THAT(recorder.at(1), ElementsAre("first", "second"));
}

TEST_F(TraceTest, BracesInAnArgumentStandForThemselves) {
    auto const name = freshComponent();
    TraceRecorder const recorder(name);
    TRACE_MESSAGE(Trace::handle(name), 8, "( buffer : \"{}\" )", "a{b}/{}");
    EXPECT_THAT(recorder.at(8), ElementsAre("( buffer : \"a{b}/{}\" )"));
}

// --- the sink ---

TEST_F(TraceTest, TheSinkIsToldComponentLevelAndText) {
    auto& handle = Trace::handle(freshComponent());
    handle.setMask(0x20);
    std::vector<std::string> calls;
    ScopedSink const sink(
        [&calls](std::string const& component, int level, std::string const& text) {
            calls.push_back(component + "|" + std::to_string(level) + "|" + text);
        });
    TRACE_MESSAGE(handle, 5, "loaded {} files", 3);
    EXPECT_THAT(calls, ElementsAre(handle.name() + "|5|loaded 3 files"));
}

TEST_F(TraceTest, ReplacingTheSinkGivesTheFormerBack) {
    auto& handle = Trace::handle(freshComponent());
    handle.setMask(0x1);
    std::vector<std::string> first;
    std::vector<std::string> second;
    ScopedSink const outer([&](auto const&, int, auto const& text) { first.push_back(text); });
    auto const former =
        Trace::setSink([&](auto const&, int, auto const& text) { second.push_back(text); });
    TRACE_MESSAGE(handle, 0, "to the second");
    ASSERT_TRUE(former);
    former("a component", 0, "by hand");
    Trace::setSink(former);
    TRACE_MESSAGE(handle, 0, "to the first");
    EXPECT_THAT(first, ElementsAre("by hand", "to the first"));
    EXPECT_THAT(second, ElementsAre("to the second"));
}

TEST_F(TraceTest, TheDefaultSinkWritesLinesToStandardError) {
    auto& handle = Trace::handle(freshComponent());
    handle.setMask(0xffff);
    ScopedSink const defaultSink(nullptr);
    CapturedStandardError const standardError;
    TRACE_MESSAGE(handle, 0, "first {}", 1);
    TRACE_MESSAGE(handle, 12, "100%s");
    EXPECT_EQ(standardError.text(),
              handle.name() + " 0: first 1\n" + handle.name() + " 12: 100%s\n");
}

TEST_F(TraceTest, AnEmptySinkStandsForTheDefault) {
    auto& handle = Trace::handle(freshComponent());
    handle.setMask(0x1);
    ScopedSink const none(nullptr);
    ScopedSink const recording([](auto const&, int, auto const&) {});
    auto const former = Trace::setSink(Trace::Sink());
    EXPECT_TRUE(former);
    CapturedStandardError const standardError;
    TRACE_MESSAGE(handle, 0, "default again");
    EXPECT_EQ(standardError.text(), handle.name() + " 0: default again\n");
}

TEST_F(TraceTest, ASinkThatThrowsDoesNotBlockTheNextMessage) {
    auto& handle = Trace::handle(freshComponent());
    handle.setMask(0x1);
    int calls = 0;
    ScopedSink const sink([&calls](auto const&, int, auto const&) {
        if (++calls == 1)
            throw std::runtime_error("disk full");
    });
    EXPECT_THROW(TRACE_MESSAGE(handle, 0, "lost"), std::runtime_error);
    TRACE_MESSAGE(handle, 0, "kept");
    EXPECT_EQ(calls, 2);
}

TEST(TraceDeathTest, AMessageThatStandardErrorDoesNotTakeIsLostWithoutHarm) {
    auto& handle = Trace::handle(freshComponent());
    handle.setMask(0x1);
    EXPECT_EXIT(
        {
            Trace::setSink(nullptr);
            close(STDERR_FILENO);
            TRACE_MESSAGE(handle, 0, "nobody reads this");
            _exit(EXIT_SUCCESS);
        },
        testing::ExitedWithCode(EXIT_SUCCESS), "");
}

// --- threads ---

TEST_F(TraceTest, TwoThreadsThatNameAComponentGetOneHandle) {
    std::vector<std::string> names(500);
    for (auto& name : names)
        name = freshComponent();
    std::array<std::vector<Trace::Handle*>, 2> handles;
    support::inThreads(2, [&](int thread) {
        for (auto const& name : names)
            handles[static_cast<std::size_t>(thread)].push_back(&Trace::handle(name));
    });
    EXPECT_EQ(handles[0], handles[1]);
}

TEST_F(TraceTest, SinksAreCalledOneAtATime) {
    auto& handle = Trace::handle(freshComponent());
    handle.setMask(0x1);
    std::vector<std::string> texts;
    ScopedSink const sink([&texts](auto const&, int, auto const& text) { texts.push_back(text); });
    support::inThreads(2, [&handle](int thread) {
        for (int step = 0; step < 2000; ++step)
            TRACE_MESSAGE(handle, 0, "{}", thread);
    });
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "0"), 2000);
    EXPECT_EQ(std::count(texts.begin(), texts.end(), "1"), 2000);
}

TEST_F(TraceTest, NoMessageIsLostWhileTheSinkIsReplaced) {
    auto& handle = Trace::handle(freshComponent());
    handle.setMask(0x1);
    std::array<int, 2> counts{};
    auto const counting = [&counts](std::size_t index) {
        return [&counts, index](auto const&, int, auto const&) { ++counts[index]; };
    };
    ScopedSink const sink(counting(0));
    support::inThreads(2, [&](int thread) {
        for (std::size_t step = 0; step < 2000; ++step)
            if (thread == 0)
                TRACE_MESSAGE(handle, 0, "message");
            else
                Trace::setSink(counting(step % 2));
    });
    EXPECT_EQ(counts[0] + counts[1], 2000);
}

TEST_F(TraceTest, LevelsMayBeSwitchedWhileAnotherThreadTraces) {
    auto& handle = Trace::handle(freshComponent());
    std::vector<std::string> texts;
    ScopedSink const sink([&texts](auto const&, int, auto const& text) { texts.push_back(text); });
    support::inThreads(2, [&handle](int thread) {
        for (unsigned step = 0; step < 5000; ++step)
            if (thread == 0)
                handle.setMask(step % 2 == 0 ? 0x2 : 0x0);
            else
                TRACE_MESSAGE(handle, step % 2, "level {}", step % 2);
    });
    EXPECT_THAT(texts, testing::Each("level 1"));
}

} // namespace
