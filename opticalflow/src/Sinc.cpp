// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/Sinc.h"

#include <array>

namespace solvan_of {
namespace {

constexpr double kPi = 3.14159265358979323846;

/// Sums of the series around 0, of at most 1.6: what is left out is below 1e-13. Libraries differ in the last bit.
double sine(double x) {
    const double q = x * x;
    double sum = 0;
    for (int k = 21; k >= 3; k -= 2) sum = (1.0 + sum) * -q / (k * (k - 1));
    return x * (1.0 + sum);
}
double cosine(double x) {
    const double q = x * x;
    double sum = 0;
    for (int k = 22; k >= 2; k -= 2) sum = (1.0 + sum) * -q / (k * (k - 1));
    return 1.0 + sum;
}

/// cos(pi * d / 10) for |d| <= 11.
double window_cosine(double d) {
    const double size = d < 0 ? -d : d;
    return size <= 5.0 ? cosine(kPi * size / 10.0) : -cosine(kPi * (10.0 - size) / 10.0);
}

/// sin(pi * (k - f)) from sin(pi * f) for 0 <= f < 1.
double sine_of_pi(int k, double f) {
    const double s = f <= 0.5 ? sine(kPi * f) : sine(kPi * (1.0 - f));
    return k % 2 == 0 ? -s : s;
}

float tap(int k, double fraction) {
    const double d = k - fraction;
    if (d == 0.0) return 1.0f;
    return static_cast<float>((window_cosine(d) + 1.0) * 0.5 * (sine_of_pi(k, fraction) / d));
}

}  // namespace

SincTaps sinc_taps(const Place& place) {
    SincTaps taps;
    taps.first = place.whole - SincTaps::kRadius;
    float sum = 0;
    for (int i = 0; i < SincTaps::kCount; ++i) {
        taps.weights[i] = tap(i - SincTaps::kRadius, place.fraction);
        sum += taps.weights[i];
    }
    for (float& weight : taps.weights) weight /= sum;
    return taps;
}

}  // namespace solvan_of
