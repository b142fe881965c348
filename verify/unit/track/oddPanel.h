/** The signals of a panel that seems to be mounted upside down. */
#ifndef VERIFY_TRACK_ODD_PANEL_H
#define VERIFY_TRACK_ODD_PANEL_H

#include <cmath>
#include <complex>
#include <random>
#include <vector>

/**
 * Aster's vertical pairs hear the same, its horizontal ones share only some partials: the smaller
 * that share, the more it looks like a panel upside down. Microphones 1 and 2 carry low partials
 * of their own on top, loud enough to pass for a voice.
 */
class OddPanel {
  public:
    explicit OddPanel(double shared) : shared_(shared) {}

    std::vector<float> next() {
        std::vector<float> frame(6 * 2048);
        const unsigned int sources[6] = {2, 3, 4, 1, 2, 1};  // pairs (3,5) and (4,0) are alike
        for (std::size_t c = 0; c < 6; ++c) addPartials(&frame[c * 2048], sources[c]);
        samples_ += 2048;
        return frame;
    }

  private:
    static constexpr int Partials = 700;

    void addPartials(float* out, unsigned int source) const {
        std::mt19937 common(99);
        std::mt19937 own(source);
        std::uniform_real_distribution<double> uniform(0.0, 1.0);
        std::vector<double> sum(2048);
        for (int p = 0; p < Partials; ++p) {
            const double frequency = 700.0 + 16300.0 * (p + uniform(common)) / Partials;
            const bool isShared = uniform(common) < shared_;
            const double commonPhase = uniform(common);
            const double ownPhase = uniform(own);
            addTone(sum, frequency, isShared ? commonPhase : ownPhase, 1.0);
        }
        const bool isTalking = source >= 3;
        for (int p = 0; p < 60 && isTalking; ++p) {
            const double frequency = 230.0 + 380.0 * uniform(own);  // drawn before the phase
            addTone(sum, frequency, uniform(own), 12.0);
        }
        for (std::size_t i = 0; i < sum.size(); ++i) {
            out[i] = static_cast<float>(std::round(sum[i] * 4000.0));
        }
    }

    void addTone(std::vector<double>& sum, double frequency, double turns, double level) const {
        const double step = 6.283185307179586 * frequency / 48000.0;
        const double start = 6.283185307179586 * turns + step * static_cast<double>(samples_);
        std::complex<double> phasor = std::polar(level, start);
        const std::complex<double> turn = std::polar(1.0, step);
        for (double& value : sum) {
            value += phasor.real();
            phasor = {phasor.real() * turn.real() - phasor.imag() * turn.imag(),
                      phasor.real() * turn.imag() + phasor.imag() * turn.real()};
        }
    }

    double shared_;
    long samples_ = 0;
};

#endif
