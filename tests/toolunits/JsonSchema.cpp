#include "JsonSchema.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

namespace support {
namespace {

using Stream = std::unique_ptr<FILE, int (*)(FILE*)>;

struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;

    Pipe() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw std::runtime_error("cannot make a pipe");
        readEnd = ends[0];
        writeEnd = ends[1];
    }
};

} // namespace

// The process that judges.
struct JsonSchema::Parsed {
    Stream questions{nullptr, &std::fclose};
    Stream answers{nullptr, &std::fclose};
    pid_t process = -1;

    Parsed(std::string const& schema, std::string const& definition) {
        auto const judge = std::string(KELDA_SOURCE_DIR) + "/tests/toolunits/validate-json";
        Pipe const in;
        Pipe const out;
        process = fork();
        if (process == -1)
            throw std::runtime_error("cannot start a process");
        if (process == 0) {
            dup2(in.readEnd, STDIN_FILENO);
            dup2(out.writeEnd, STDOUT_FILENO);
            execl(judge.c_str(), judge.c_str(), schema.c_str(),
                  definition.empty() ? nullptr : definition.c_str(), nullptr);
            _exit(127);
        }
        close(in.readEnd);
        close(out.writeEnd);
        questions.reset(fdopen(in.writeEnd, "w"));
        answers.reset(fdopen(out.readEnd, "r"));
        if (nextAnswer() != "ready\n")
            throw std::runtime_error("cannot judge by " + schema + " " + definition);
    }

    Parsed(Parsed const&) = delete;
    Parsed& operator=(Parsed const&) = delete;

    ~Parsed() {
        questions.reset();
        answers.reset();
        waitpid(process, nullptr, 0);
    }

    std::string nextAnswer() const {
        char* line = nullptr;
        std::size_t room = 0;
        auto const length = getline(&line, &room, answers.get());
        std::string answer(line, length < 0 ? 0 : static_cast<std::size_t>(length));
        std::free(line);
        return answer;
    }
};

JsonSchema::JsonSchema(std::string const& file, std::string const& definition)
    : parsed_(std::make_unique<Parsed>(std::string(KELDA_SOURCE_DIR) + "/" + file, definition)) {}

JsonSchema::~JsonSchema() = default;

std::vector<std::string> JsonSchema::violations(std::string const& document) const {
    std::string question;
    try {
        // What is no JSON, or not UTF-8, is found here: the judge is less strict.
        [[maybe_unused]] auto const parsed = nlohmann::json::parse(document);
        question = nlohmann::json(document).dump() + "\n";
    } catch (nlohmann::json::exception const& exception) {
        return {exception.what()};
    }
    std::fputs(question.c_str(), parsed_->questions.get());
    std::fflush(parsed_->questions.get());
    return nlohmann::json::parse(parsed_->nextAnswer()).get<std::vector<std::string>>();
}

std::string sourceFile(std::string const& file) {
    std::ifstream stream(std::string(KELDA_SOURCE_DIR) + "/" + file);
    if (!stream)
        throw std::runtime_error("cannot read " + file);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

} // namespace support
