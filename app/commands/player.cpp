// SPDX-License-Identifier: MIT
#include "app/commands/player.h"

#include "engine/error.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace vireo {

Player::Player(const std::string& title) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw Error(std::string("cannot make a pipe: ") + std::strerror(errno));
    input_ = ends[1];
    const char* const words[] = {"ffplay",      "-hide_banner", "-loglevel", "error", "-window_title",
                                 title.c_str(), "-f",           "nut",       "-i",    "pipe:0",
                                 nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
    const int failure =
        posix_spawnp(&process_, words[0], &actions, nullptr, const_cast<char* const*>(words), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[0]);
    if (failure == 0) return;
    close(input_);
    throw Error("preview shows its pictures with ffplay, which cannot be started: " +
                std::string(std::strerror(failure)) + "; it comes with FFmpeg");
}

Player::~Player() {
    if (input_ >= 0) close(input_);
    if (process_ < 0) return;
    kill(process_, SIGTERM);
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) continue;
}

bool Player::isGone() const {
    pollfd state{input_, POLLOUT, 0};
    return poll(&state, 1, 0) > 0 && (state.revents & POLLERR) != 0;
}

void Player::wait() {
    close(input_);
    input_ = -1;
    int status = 0;
    while (waitpid(process_, &status, 0) < 0) {
        if (errno != EINTR) break;
    }
    process_ = -1;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw Error("ffplay failed to show the preview");
}

}  // namespace vireo
