// A folder with devices, and a list of them.
#pragma once

#include <filesystem>
#include <string>

#include "support/KeldaProgram.h"

namespace support {

class Fleet {
  public:
    // A device in which A mounts a/b, and which has as many errors.
    Fleet& add(std::string const& name, int errors = 0) {
        std::string profile = "agentName: A\na/b,T,r\n";
        for (int i = 0; i < errors; ++i)
            profile += "a/c,T,z\n";
        folder_.write(name + "/preinit/P", "a/b,T\na/c,T\n");
        folder_.write(name + "/profiles/A", profile);
        return named(name);
    }
    Fleet& addCopy(std::string const& name, std::filesystem::path const& preinit,
                   std::filesystem::path const& profiles) {
        std::filesystem::create_directories(folder_ / name);
        std::filesystem::copy(preinit, folder_ / name / "preinit",
                              std::filesystem::copy_options::recursive);
        if (!profiles.empty())
            std::filesystem::copy(profiles, folder_ / name / "profiles",
                                  std::filesystem::copy_options::recursive);
        else
            std::filesystem::create_directories(folder_ / name / "profiles");
        return named(name);
    }
    Fleet& named(std::string const& name) {
        ++size_;
        folder_.write("list", list_ += name + "\n");
        return *this;
    }

    support::TemporaryDirectory const& folder() const { return folder_; }
    std::size_t size() const { return size_; }
    Outcome run(Words const& words) const {
        return KeldaProgram().inFolder(folder_.path()).run(words);
    }
    Outcome run(Words const& words, std::string const& jobs) const {
        return run(words + Words{"--devices", "list", "--jobs", jobs});
    }

  private:
    support::TemporaryDirectory folder_;
    std::string list_;
    std::size_t size_ = 0;
};

} // namespace support
