#include "devices/DeviceBatch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string_view>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <sched.h>

#include "FileOutput.h"
#include "Text.h"
#include "Values.h"

namespace KeldaTool {
namespace {

constexpr char const* standardInput = "-";

std::string textOfFile(std::string const& file) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const stream(std::fopen(file.c_str(), "re"),
                                                                 &std::fclose);
    std::string text;
    std::array<char, 65536> buffer;
    if (stream != nullptr)
        while (auto const count = std::fread(buffer.data(), 1, buffer.size(), stream.get()))
            text.append(buffer.data(), count);
    if (stream == nullptr || std::ferror(stream.get()) != 0)
        throw std::runtime_error(
            fmt::format("cannot read {}: {}", printable(file), std::strerror(errno)));
    return text;
}

// The lines that name devices. A name goes to the system, to which a NUL byte is its end.
std::vector<std::string> namesIn(std::string_view text, std::string const& file) {
    std::vector<std::string> names;
    while (!text.empty()) {
        auto const length = std::min(text.find('\n'), text.size());
        auto line = text.substr(0, length);
        text.remove_prefix(std::min(length + 1, text.size()));
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (line.find('\0') != std::string_view::npos)
            throw std::runtime_error(
                fmt::format("{} is no list of devices: it holds a NUL byte", file));
        if (!line.empty() && line.front() != '#')
            names.emplace_back(line);
    }
    return names;
}

// Those on which the program may run, which may be less than the machine has.
unsigned usableCores() {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    if (sched_getaffinity(0, sizeof cores, &cores) != 0)
        return 1;
    return static_cast<unsigned>(std::max(CPU_COUNT(&cores), 1));
}

void excludeSingleDevice(CLI::App& command, CLI::Option& option) {
    for (char const* const name : {"--preinit", "--profiles", "--root"})
        if (auto* const single = command.get_option_no_throw(name))
            option.excludes(single);
}

std::string refuseNoJobs(std::string const& number) {
    unsigned jobs = 0;
    constexpr unsigned most = 1024;
    return CLI::detail::lexical_cast(number, jobs) && jobs >= 1 && jobs <= most
               ? ""
               : fmt::format("must be a number from 1 to {}, not '{}'", most, number);
}

} // namespace

void BatchOptions::addTo(CLI::App& command, std::string const& what) {
    auto* const device = command.add_option("--device", devices_, what);
    // What follows a DIR is no further one, but may be an argument.
    device->type_name("DIR")->allow_extra_args(false);
    mustNotBeEmpty(*device);
    auto* const file = command.add_option("--devices", file_, "File with a DIR in each line");
    mustNotBeEmpty(*file->type_name("FILE"));
    auto* const jobs = command.add_option("--jobs", jobs_, "Work on so many devices at a time");
    jobs->type_name("N")->check(CLI::Validator(refuseNoJobs, ""));
    jobs->default_str("one for each core");
    excludeSingleDevice(command, *device);
    excludeSingleDevice(command, *file);
    deviceOption_ = device;
    fileOption_ = file;
    command.final_callback([this, jobs] {
        if (jobs->count() > 0 && !isGiven())
            throw CLI::RequiresError("--jobs", "--device or --devices");
    });
}

bool BatchOptions::isGiven() const {
    return deviceOption_->count() > 0 || fileOption_->count() > 0;
}

std::vector<std::string> BatchOptions::devices() const {
    auto devices = devices_;
    if (file_.empty())
        return devices;
    bool const isInput = file_ == standardInput;
    auto const name = isInput ? std::string("standard input") : printable(file_);
    auto const listed = namesIn(isInput ? readStandardInput() : textOfFile(file_), name);
    devices.insert(devices.end(), listed.begin(), listed.end());
    if (devices.empty())
        throw std::runtime_error(fmt::format("{} names no device", name));
    return devices;
}

unsigned BatchOptions::jobs() const {
    return jobs_ == 0 ? usableCores() : jobs_;
}

} // namespace KeldaTool
