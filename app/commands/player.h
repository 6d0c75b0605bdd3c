// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_PLAYER_H
#define VIREO_APP_COMMANDS_PLAYER_H

#include <string>

namespace vireo {

/// An ffplay that shows what is written to it. Ends with this object.
class Player {
public:
    /// Throws Error where there is no ffplay.
    explicit Player(const std::string& title);
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;
    ~Player();

    int process() const { return process_; }

    /// Where to write, in the form of NUT.
    int input() const { return input_; }

    /// Whether its window was closed.
    bool isGone() const;

    /// Tells it that all is written and waits until its window is closed. Throws Error where it could
    /// not show anything.
    void wait();

private:
    int input_ = -1;
    int process_ = -1;
};

}  // namespace vireo

#endif
