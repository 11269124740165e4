// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Process.h"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace velmora {

Process::Process(const std::filesystem::path& program, const Environment& additions,
                 const std::filesystem::path& errors)
{
    std::vector<std::string> words{"env"}; // which becomes the program
    for (const auto& [name, value] : additions) words.push_back(name + "=" + value);
    words.push_back(program);
    std::vector<char*> arguments;
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                     0644);
    const int failure = posix_spawnp(&id_, "env", &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) throw std::system_error(failure, std::generic_category(), program);
}

Process::~Process()
{
    signal(SIGKILL);
    waitpid(id_, nullptr, 0);
}

void Process::signal(int number) const
{
    if (!status_) kill(id_, number);
}

int Process::wait()
{
    int status = 0;
    if (!status_ && waitpid(id_, &status, 0) == id_)
        status_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    return status_.value();
}

int Process::terminate()
{
    signal(SIGTERM);
    return wait();
}

} // namespace velmora
