// Runs zebview in a folder of its own and keeps what it says.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace zebtest
{

struct Outcome {
    int status = -1;  // 1000 more than the signal, if one ended it
    std::string out, err;

    long errorLines() const { return std::count(err.begin(), err.end(), '\n'); }
};

// A folder that lives as long as the test; zebview runs in it.
class Zebview : public testing::Test
{
protected:
    Zebview()
    {
        std::string name = testing::TempDir() + "zebviewXXXXXX";
        fFolder = mkdtemp(name.data());
        fLogs = fFolder;
        fLogs += ".logs";
        std::filesystem::create_directory(fLogs);
        // Whoever runs the tests may have defaults of their own.
        setenv("XDG_CONFIG_HOME", fLogs.c_str(), 1);
    }
    ~Zebview() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(fFolder, ignored);
        std::filesystem::remove_all(fLogs, ignored);
    }

    // terminal  a file that takes the place of standard error, such as a terminal's
    pid_t start(const std::vector<std::string>& arguments, const std::string& terminal = "") const
    {
        std::vector<std::string> words{ZEBVIEW};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> argv;
        argv.reserve(words.size() + 1);
        for (std::string& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addchdir_np(&actions, fFolder.c_str());
        const std::string out = (fLogs / "out").string();
        const std::string err = terminal.empty() ? (fLogs / "err").string() : terminal;
        const int flags = O_WRONLY | O_CREAT | O_TRUNC;
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), flags, 0600);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), flags, 0600);
        pid_t pid = -1;
        EXPECT_EQ(posix_spawn(&pid, ZEBVIEW, &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        return pid;
    }

    Outcome finish(pid_t pid) const
    {
        int status = 0;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
        pid_t ended = 0;
        while ((ended = waitpid(pid, &status, WNOHANG)) == 0) {
            if (std::chrono::steady_clock::now() > deadline) {
                ADD_FAILURE() << "zebview does not come to an end";
                kill(pid, SIGKILL);
                ended = waitpid(pid, &status, 0);
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        EXPECT_EQ(ended, pid);
        Outcome outcome;
        outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
        outcome.out = read(fLogs / "out");
        outcome.err = read(fLogs / "err");
        return outcome;
    }

    Outcome run(const std::vector<std::string>& arguments) const
    {
        return finish(start(arguments));
    }

    // Small and quick, and silent: the way every picture of a test is made.
    std::string render(const std::string& model, const std::vector<std::string>& options = {},
                       const std::string& name = "picture.png", const std::string& said = "") const
    {
        std::vector<std::string> arguments{model, "-o", name};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto given = [&](const char* option) {
            return std::find(options.begin(), options.end(), option) != options.end();
        };
        if (!given("--size")) arguments.insert(arguments.end(), {"--size", "160x120"});
        if (!given("--samples") && !given("--adaptive")) {
            arguments.insert(arguments.end(), {"--samples", "2"});
        }
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << model;
        EXPECT_EQ(outcome.err, said) << model;
        EXPECT_EQ(outcome.out, "") << model;
        return path(name);
    }

    std::string path(const std::string& name) const { return (fFolder / name).string(); }

    std::string write(const std::string& name, const std::string& text) const
    {
        std::ofstream(fFolder / name, std::ios::binary) << text;
        return name;
    }

    static std::string read(const std::filesystem::path& file)
    {
        std::ostringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    }

    // The names of what is in the folder, in order.
    std::vector<std::string> files() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(fFolder)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path fFolder, fLogs;
};

}  // namespace zebtest
