#pragma once

// The way of a damped spring from where it is to where it shall be.
//
// `response` is the time in seconds of one undamped swing, `dampingFraction` 1 comes to rest without
// overshoot. A response of zero or less arrives at once.
struct SpringCurve {
    double response = 0.5;
    double dampingFraction = 0.825;

    // A place on the way and the speed there, per second.
    struct State {
        double value = 0;
        double velocity = 0;
        bool operator==(const State &) const = default;
    };

    // Where a spring that stood in `start` is `seconds` later when it is drawn to `target`.
    [[nodiscard]] State at(double seconds, const State &start, double target) const;
    // Whether nobody would see the difference if it stood at `target` now; `span` is the whole way's length.
    [[nodiscard]] static bool isAtRest(const State &state, double target, double span);
    bool operator==(const SpringCurve &) const = default;
};
