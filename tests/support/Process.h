// A program that runs beside a test: started with pipes to its standard input and output, ended with the test.
#pragma once

#include <array>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace quillomat::testing {

/// Where the shell would find a program; nothing where it is not installed.
inline std::optional<std::string> findProgram(const std::string& name) {
    const char* path = std::getenv("PATH");
    std::string folders = std::string(path != nullptr ? path : "") + ":/usr/sbin:/sbin";
    for (std::size_t start = 0; start <= folders.size();) {
        const std::size_t end = std::min(folders.find(':', start), folders.size());
        std::string file = folders.substr(start, end - start) + "/" + name;
        if (::access(file.c_str(), X_OK) == 0) {
            return file;
        }
        start = end + 1;
    }
    return std::nullopt;
}

class Process {
public:
    explicit Process(const std::vector<std::string>& command) {
        std::array<int, 2> input{};
        std::array<int, 2> output{};
        if (::pipe2(input.data(), O_CLOEXEC) != 0 || ::pipe2(output.data(), O_CLOEXEC) != 0) {
            return;
        }
        std::vector<char*> arguments;
        for (const std::string& argument : command) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        if (::posix_spawnp(&id_, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) {
            id_ = -1;
        }
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(input[0]);
        ::close(output[1]);
        input_ = input[1];
        output_ = output[0];
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() {
        ::close(input_);
        ::close(output_);
        if (id_ > 0) {
            ::kill(id_, SIGTERM);
            ::waitpid(id_, nullptr, 0);
        }
    }

    [[nodiscard]] bool isStarted() const { return id_ > 0; }

    /// The next line it prints; what there is of one when its output ends.
    [[nodiscard]] std::string readLine() const {
        std::string line;
        for (char c = 0; ::read(output_, &c, 1) == 1 && c != '\n';) {
            line += c;
        }
        return line;
    }

    /// Waits for its own end; its exit status, or -1 when it was killed.
    int wait() {
        int status = 0;
        ::waitpid(id_, &status, 0);
        id_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t id_ = -1;
    int input_ = -1;
    int output_ = -1;
};

/// Runs a program to its end, its output dropped; whether it said that all went well.
inline bool runQuietly(std::vector<std::string> command) {
    command.insert(command.begin(), {"/bin/sh", "-c", R"(exec "$@" >/dev/null 2>&1)", "sh"});
    Process process(command);
    return process.isStarted() && process.wait() == 0;
}

} // namespace quillomat::testing
