#include "SpringCurve.h"

#include <algorithm>
#include <cmath>
#include <numbers>

SpringCurve::State SpringCurve::at(double seconds, const State &start, double target) const
{
    if (response <= 0)
        return {target, 0};
    if (seconds <= 0)
        return start;
    const double omega = 2 * std::numbers::pi / response;
    const double zeta = std::clamp(dampingFraction, 0.0, 1.0);
    const double distance = start.value - target;
    const double decay = std::exp(-zeta * omega * seconds);
    const double damped = omega * std::sqrt(1 - zeta * zeta);
    if (damped < 1e-9) { // Critical damping: the characteristic equation has one root.
        const double slope = start.velocity + omega * distance;
        const double swing = distance + slope * seconds;
        return {target + decay * swing, decay * (slope - omega * swing)};
    }
    const double sine = (start.velocity + zeta * omega * distance) / damped;
    const double c = std::cos(damped * seconds);
    const double s = std::sin(damped * seconds);
    const double swing = distance * c + sine * s;
    const double swingSpeed = damped * (sine * c - distance * s);
    return {target + decay * swing, decay * (swingSpeed - zeta * omega * swing)};
}

bool SpringCurve::isAtRest(const State &state, double target, double span)
{
    const double unit = std::max(std::abs(span), 1e-6);
    return std::abs(state.value - target) <= 0.001 * unit && std::abs(state.velocity) <= 0.02 * unit;
}
