// Many devices at a time: the order of the answers, what is kept of them, and what happens to
// processes that end badly, or whose program ends.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <new>
#include <thread>

#include "DeviceBatches.h"
#include "Output.h"
#include "support/Descriptors.h"
#include "support/TemporaryDirectory.h"

namespace {

using namespace std::chrono_literals;
using KeldaTool::askEach;
using KeldaTool::askEachCounted;
using KeldaTool::BatchText;
using KeldaTool::BatchTotals;
using KeldaTool::CountedReport;
using KeldaTool::ExitStatus;
using KeldaTool::Report;
using toolunits::BatchCall;
using toolunits::deviceWords;
using toolunits::EndlessDevices;
using toolunits::OtherProcess;
using toolunits::Pipe;

using Devices = std::vector<std::string>;
using Ask = std::function<Report(std::string const&)>;

struct Asked {
    std::string out;
    std::string err;
    Report last;
};

Asked asked(Devices const& devices, unsigned jobs, Ask const& ask, BatchText const& text = {}) {
    BatchCall const call(deviceWords(devices, jobs));
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Asked asked;
    asked.last = askEach(call.options(), ask, text);
    asked.out = testing::internal::GetCapturedStdout();
    asked.err = testing::internal::GetCapturedStderr();
    return asked;
}

Devices numbered(unsigned count) {
    Devices devices;
    for (unsigned i = 0; i < count; ++i)
        devices.push_back("d" + std::to_string(i));
    return devices;
}

Report echo(std::string const& device) {
    return {device + "\n", "", ExitStatus::success};
}

// Answers of many sizes, those of early devices late: they overtake each other.
Report uneven(std::string const& device) {
    auto const number = std::stoul(device.substr(1));
    std::this_thread::sleep_for(std::chrono::milliseconds(20 - number % 20));
    return {std::string(number * 7919 % 300000, 'x') + device + "\n",
            number % 3 == 0 ? "note of " + device + "\n" : "",
            number == 11 ? ExitStatus::failure : ExitStatus::success};
}

TEST(DeviceBatch, WritesTheSameWhateverTheNumberOfJobs) {
    auto const devices = numbered(30);
    BatchText const text{"[", ",", "]"};
    auto const one = asked(devices, 1, uneven, text);
    EXPECT_TRUE(one.out.starts_with("[d0\n,x"));
    EXPECT_EQ(one.last.results, "]");
    EXPECT_EQ(one.last.status, ExitStatus::failure);
    for (unsigned const jobs : {2U, 7U, 64U}) {
        auto const several = asked(devices, jobs, uneven, text);
        EXPECT_TRUE(several.out == one.out) << jobs;
        EXPECT_EQ(several.err, one.err);
        EXPECT_EQ(several.last.status, ExitStatus::failure);
    }
}

TEST(DeviceBatch, PutsNothingBetweenAnswersWithoutResults) {
    auto const even = [](std::string const& device) {
        return (device.back() - '0') % 2 == 0 ? echo(device) : Report();
    };
    EXPECT_EQ(asked(numbered(5), 2, even, {"<", "|\n", ">"}).out, "<d0\n|\nd2\n|\nd4\n");
}

TEST(DeviceBatch, AsksADeviceAsOftenAsItIsNamed) {
    EXPECT_EQ(asked({"a", "b", "a"}, 2, echo).out, "a\nb\na\n");
}

TEST(DeviceBatch, TakesAnyBytesForADevice) {
    Devices const devices{"a\nb", "\x1b[31m", "\xff\xfe", " "};
    auto const refuse = [](std::string const&) -> Report { throw std::runtime_error("no\n\xff"); };
    EXPECT_EQ(asked(devices, 2, echo).out, "a\nb\n\x1b[31m\n\xff\xfe\n \n");
    EXPECT_EQ(asked(devices, 2, refuse).err, "kelda: a\\x0ab: no\\x0a\\xff\n"
                                             "kelda: \\x1b[31m: no\\x0a\\xff\n"
                                             "kelda: \\xff\\xfe: no\\x0a\\xff\n"
                                             "kelda:  : no\\x0a\\xff\n");
}

// Every way in which a process can end badly.
Report spoilt(std::string const& device) {
    if (device == "aborts")
        std::abort();
    if (device == "is killed")
        kill(getpid(), SIGKILL);
    if (device == "ends")
        _exit(0);
    if (device == "ends with 3")
        _exit(3);
    if (device == "throws")
        throw std::runtime_error("something is missing");
    return echo(device);
}

TEST(DeviceBatch, GoesOnBehindADeviceThatHasNoAnswer) {
    Devices const devices{"a", "aborts", "b", "is killed", "ends", "c", "ends with 3", "d"};
    for (unsigned const jobs : {1U, 3U}) {
        auto const outcome = asked(devices, jobs, spoilt);
        EXPECT_EQ(outcome.out, "a\nb\nc\nd\n");
        EXPECT_EQ(outcome.err, "kelda: aborts: ended by signal 6 (Aborted)\n"
                               "kelda: is killed: ended by signal 9 (Killed)\n"
                               "kelda: ends: ended without an answer\n"
                               "kelda: ends with 3: ended without an answer\n");
        EXPECT_EQ(outcome.last.status, ExitStatus::failure);
    }
}

TEST(DeviceBatch, ThatThrowsIsAWrongCallWhateverTheOthersAre) {
    auto const outcome = asked({"throws", "aborts", "a"}, 2, spoilt);
    EXPECT_EQ(outcome.err, "kelda: throws: something is missing\n"
                           "kelda: aborts: ended by signal 6 (Aborted)\n");
    EXPECT_EQ(outcome.last.status, ExitStatus::wrongCall);
}

TEST(DeviceBatch, ThatHasNoMemoryIsAFailure) {
    auto const ask = [](std::string const&) -> Report { throw std::bad_alloc(); };
    auto const outcome = asked({"a"}, 1, ask);
    EXPECT_EQ(outcome.err, "kelda: a: std::bad_alloc\n");
    EXPECT_EQ(outcome.last.status, ExitStatus::failure);
}

TEST(DeviceBatch, TellsHowAProcessEndedWhereTheProgramWasToIgnoreThat) {
    auto const before = std::signal(SIGCHLD, SIG_IGN);
    auto const outcome = asked({"is killed", "a"}, 2, spoilt);
    std::signal(SIGCHLD, before);
    EXPECT_EQ(outcome.out, "a\n");
    EXPECT_EQ(outcome.err, "kelda: is killed: ended by signal 9 (Killed)\n");
}

TEST(DeviceBatch, NamesADeviceOnceInAMessage) {
    auto const refuse = [](std::string const& device) -> Report {
        if (device == "here")
            throw std::runtime_error("here is nothing");
        throw std::runtime_error(device == "there" ? "nothing is there" : "nothing anywhere");
    };
    EXPECT_EQ(asked({"here", "there", "any", "not"}, 1, refuse).err,
              "kelda: here is nothing\n"
              "kelda: nothing is there\n"
              "kelda: any: nothing anywhere\n"
              "kelda: not: nothing anywhere\n");
}

TEST(DeviceBatch, AFailureHasItsPlaceAmongTheResults) {
    std::vector<std::string> failures;
    BatchText text{"", ",", ""};
    text.failure = [&failures](std::string const& device, std::string const& what) {
        failures.push_back(device);
        return "<" + what + ">";
    };
    auto const outcome = asked({"a", "throws", "is killed", "b"}, 2, spoilt, text);
    EXPECT_EQ(outcome.out, "a\n,<something is missing>,<ended by signal 9 (Killed)>,b\n");
    EXPECT_EQ(failures, (Devices{"throws", "is killed"}));
}

TEST(DeviceBatch, AddsCountsUpForItsEnd) {
    BatchCall const call(deviceWords({"1", "no number", "20", "300"}, 2));
    BatchTotals totals;
    testing::internal::CaptureStderr();
    auto const report = askEachCounted(
        call.options(),
        [](std::string const& device) {
            if (device == "no number")
                throw std::runtime_error("not to be counted");
            return CountedReport{Report(), {std::stoull(device), 1}};
        },
        {"", "", "."},
        [&totals](BatchTotals const& all) {
            totals = all;
            return Report{"end", "message", ExitStatus::failure};
        });
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(totals.devices, 4U);
    EXPECT_EQ(totals.failed, 1U);
    EXPECT_EQ(totals.counts, (std::vector<std::uint64_t>{321, 3}));
    EXPECT_EQ(report.results, "end.");
    EXPECT_EQ(report.messages, "message");
    EXPECT_EQ(report.status, ExitStatus::wrongCall);
}

// Devices leave a mark when they are started; how many marks there are is how many were.
std::size_t marksIn(std::filesystem::path const& folder) {
    std::filesystem::directory_iterator const marks(folder);
    return static_cast<std::size_t>(std::distance(begin(marks), end(marks)));
}

TEST(DeviceBatch, StartsNoMoreThanAWindowBeyondTheFirstUnfinishedDevice) {
    for (unsigned const jobs : {1U, 2U, 5U}) {
        support::TemporaryDirectory const folder;
        auto const window = KeldaTool::batchWindow(jobs);
        // With one job nothing can overtake the first device.
        auto const most = jobs == 1 ? 1 : window;
        auto const ask = [&](std::string const& device) -> Report {
            folder.write(device, "");
            if (device != "d0")
                return {};
            for (int i = 0; marksIn(folder.path()) < most && i < 6000; ++i)
                std::this_thread::sleep_for(10ms);
            std::this_thread::sleep_for(200ms); // for more to start, if they did
            return {std::to_string(marksIn(folder.path())), "", ExitStatus::success};
        };
        EXPECT_EQ(asked(numbered(60), jobs, ask).out, std::to_string(most)) << jobs;
        EXPECT_EQ(marksIn(folder.path()), 60U);
    }
}

TEST(DeviceBatch, NeverHasMoreProcessesThanJobs) {
    support::TemporaryDirectory const folder;
    auto const ask = [&](std::string const& device) -> Report {
        folder.write(device, "");
        std::this_thread::sleep_for(10ms);
        auto const working = marksIn(folder.path());
        std::filesystem::remove(folder / device);
        return {working > 3 ? "too many\n" : "", "", ExitStatus::success};
    };
    EXPECT_EQ(asked(numbered(40), 3, ask).out, "");
}

// Asks a batch with standard output in a pipe.
int askInto(Pipe& out, Devices const& devices, unsigned jobs, Ask const& ask) {
    std::signal(SIGPIPE, SIG_IGN);
    dup2(out.writeEnd(), STDOUT_FILENO);
    dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
    out.closeReadEnd();
    out.closeWriteEnd();
    try {
        return static_cast<int>(
            askEach(BatchCall(deviceWords(devices, jobs)).options(), ask).status);
    } catch (KeldaTool::OutputLost const&) {
        bool const isChildLeft = waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
        return isChildLeft ? 77 : 66;
    }
}

TEST(DeviceBatch, WritesAnAnswerBeforeTheNextOneIsThere) {
    for (unsigned const jobs : {1U, 2U}) {
        Pipe out, mayGoOn;
        auto const ask = [&](std::string const& device) {
            return device == "a" || mayGoOn.next() == "!" ? echo(device) : Report();
        };
        OtherProcess batch([&] { return askInto(out, {"a", "b", "c"}, jobs, ask); });
        out.closeWriteEnd();
        EXPECT_EQ(out.next(2), "a\n");
        mayGoOn.put('!');
        mayGoOn.put('!');
        EXPECT_EQ(out.rest(), "b\nc\n");
        EXPECT_EQ(batch.wait(), 0);
    }
}

TEST(DeviceBatch, LeavesNoProcessWhenTheProgramIsEnded) {
    for (int const signal : {SIGTERM, SIGINT, SIGKILL, SIGHUP}) {
        EndlessDevices const endless;
        Pipe out;
        OtherProcess batch([&] { return askInto(out, {"a", "b", "c"}, 2, endless); });
        EXPECT_EQ(endless.started(2), "..");
        batch.signal(signal);
        EXPECT_EQ(batch.wait(), 128 + signal);
        EXPECT_EQ(endless.untilTheEnd(), "");
    }
}

TEST(DeviceBatch, EndsWithItsProcessesWhenNobodyReadsTheAnswers) {
    EndlessDevices const endless;
    Pipe out, mayAnswer;
    auto const ask = [&](std::string const& device) {
        if (device == "done")
            mayAnswer.next();
        return endless(device);
    };
    OtherProcess batch([&] { return askInto(out, {"done", "b", "c", "d"}, 3, ask); });
    EXPECT_EQ(endless.started(2), "..");
    out.closeReadEnd();
    mayAnswer.put('!');
    EXPECT_EQ(batch.wait(), 66);
    EXPECT_EQ(endless.untilTheEnd(), "");
}

TEST(DeviceBatch, EndsEarlyWhereAnswersCannotBeWritten) {
    support::TemporaryDirectory const folder;
    OtherProcess batch([&] {
        dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO);
        auto const ask = [&](std::string const& device) {
            folder.write(device, "");
            return echo(device);
        };
        try {
            askEach(BatchCall(deviceWords(numbered(50), 1)).options(), ask);
        } catch (KeldaTool::OutputLost const& lost) {
            return std::string(lost.what()) ==
                           "cannot write to standard output: No space left on device"
                       ? 66
                       : 1;
        }
        return 0;
    });
    EXPECT_EQ(batch.wait(), 66);
    EXPECT_LE(marksIn(folder.path()), 2U);
}

TEST(DeviceBatch, GoesOnWithFewerProcessesWhereThereCannotBeMore) {
    BatchCall const call(deviceWords(numbered(10), 4));
    testing::internal::CaptureStdout();
    {
        support::FewDescriptors const few(3);
        askEach(call.options(), echo);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "d0\nd1\nd2\nd3\nd4\nd5\nd6\nd7\nd8\nd9\n");
}

// Each device tells how many files it can open, while as many others as possible are at work.
TEST(DeviceBatch, GivesADeviceRoomForItsFilesHoweverManyWork) {
    auto const ask = [](std::string const&) -> Report {
        std::this_thread::sleep_for(20ms);
        int files = 0;
        while (open("/dev/null", O_RDONLY | O_CLOEXEC) >= 0)
            ++files;
        return {std::to_string(files) + " ", "", ExitStatus::success};
    };
    for (unsigned const jobs : {1U, 8U}) {
        BatchCall const call(deviceWords(numbered(8), jobs));
        testing::internal::CaptureStdout();
        {
            support::FewDescriptors const few(6);
            askEach(call.options(), ask);
        }
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "5 5 5 5 5 5 5 5 ") << jobs;
    }
}

TEST(DeviceBatch, TellsOfDevicesForWhichThereCanBeNoProcess) {
    BatchCall const call(deviceWords({"a", "b"}, 4));
    testing::internal::CaptureStderr();
    Report report;
    {
        support::FewDescriptors const few(1);
        report = askEach(call.options(), echo);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "kelda: a: cannot start a process: Too many open files\n"
              "kelda: b: cannot start a process: Too many open files\n");
    EXPECT_EQ(report.status, ExitStatus::failure);
}

TEST(DeviceBatch, LeavesNoDescriptorOpen) {
    auto const before = support::descriptorsInUse();
    asked({"a", "aborts", "throws", "b"}, 2, spoilt);
    EXPECT_EQ(support::descriptorsInUse(), before);
}

TEST(DeviceBatch, IsNotDisturbedBySignals) {
    Pipe out;
    OtherProcess batch([&] {
        struct sigaction nothing {};
        nothing.sa_handler = [](int) {};
        sigaction(SIGUSR1, &nothing, nullptr); // calls to the system are interrupted
        return askInto(out, numbered(20), 2, uneven);
    });
    out.closeWriteEnd();
    auto const expected = asked(numbered(20), 1, uneven).out;
    std::string text;
    for (std::string byte = out.next(); byte.size() == 1; byte = out.next()) {
        text += byte;
        if (text.size() % 1000 == 0)
            batch.signal(SIGUSR1);
    }
    EXPECT_TRUE(text == expected) << text.size() << " of " << expected.size() << " bytes";
    EXPECT_EQ(batch.wait(), 1);
}

} // namespace
