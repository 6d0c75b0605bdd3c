// SPDX-License-Identifier: MIT
// Replaces operator new of the whole program.
#ifndef VIREO_TESTS_HOST_SHORT_MEMORY_H
#define VIREO_TESTS_HOST_SHORT_MEMORY_H

/// While one lives, operator new throws std::bad_alloc or, where it may not throw, gives null.
struct ShortMemory {
    ShortMemory();
    ~ShortMemory();
    ShortMemory(const ShortMemory&) = delete;
    ShortMemory& operator=(const ShortMemory&) = delete;
};

/// While it lives, allocations are counted and one of them fails. One at a time may live.
class CountedMemory {
public:
    /// The allocation of this number fails, counted from 1.
    explicit CountedMemory(int failing);
    CountedMemory(const CountedMemory&) = delete;
    CountedMemory& operator=(const CountedMemory&) = delete;
    ~CountedMemory();

    /// Whether the failing allocation was asked for.
    bool hasFailed() const { return allocations_ >= failing_; }
    /// How many were asked for, the failing one included.
    int allocations() const { return allocations_; }
    /// What operator new gave less what operator delete took.
    int live() const { return live_; }

    /// Counts an allocation of another kind, and tells whether it has to fail. False while none lives.
    static bool nextFails();

    /// For operator new and delete.
    static void change(int live);

    /// Nothing is counted, and nothing fails, while one lives.
    class Pause {
    public:
        Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
        ~Pause();

    private:
        CountedMemory* paused_;
    };

private:
    int failing_;
    int allocations_ = 0;
    int live_ = 0;
};

#endif
