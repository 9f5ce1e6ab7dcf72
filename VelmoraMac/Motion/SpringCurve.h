#pragma once

// The motion of a damped harmonic oscillator towards a target, in closed form.
//
// `response` is the period of the undamped oscillation in seconds; a `dampingFraction` of 1 is critical damping,
// without overshoot. With a response of zero or less it is at the target at once.
struct SpringCurve {
    double response = 0.5;
    double dampingFraction = 0.825;

    // Value and velocity, per second.
    struct State {
        double value = 0;
        double velocity = 0;
        bool operator==(const State &) const = default;
    };

    // The state `seconds` after `start`.
    [[nodiscard]] State at(double seconds, const State &start, double target) const;
    // Whether the eye sees no difference between `state` and `target`; `span` is the length of the whole motion.
    [[nodiscard]] static bool isAtRest(const State &state, double target, double span);
    bool operator==(const SpringCurve &) const = default;
};
