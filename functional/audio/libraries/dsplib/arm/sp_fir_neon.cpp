#include "sp_fir_neon.h"

#include <cstring>

namespace {

void sp_fir_gen_(const float* x, const float* h, float* y, int nh, int ny) {
    for (int i = 0; i < ny; ++i) {
        float sum = 0.0f;
        for (int j = 0; j < nh; ++j) sum += h[j] * x[i + j];
        y[i] = sum;
    }
}

void zeroFill(float* y, int count) {
    for (int i = 0; i < count; ++i) y[i] = 0.0f;
}

void copySamples(float* to, const float* from, int count) {
    std::memmove(to, from, static_cast<std::size_t>(count) * sizeof(float));
}

/**
 * Stores n new samples and returns the new position. Reading circularly from it gives the nh-1 most
 * recent samples, oldest first; the slot before it holds the sample before those.
 */
int update_delay_line(const float* x, float* dl, int pos, int nh, int n) {
    if (n >= nh) {
        copySamples(dl, x + n - nh + 1, nh - 1);
        dl[nh - 1] = x[n - nh];
        return 0;
    }
    if (pos == 0 && nh <= 2048 && 4 * (nh / 8) <= n) {
        const float last = dl[n - 1];
        copySamples(dl, dl + n, nh - 1 - n);
        copySamples(dl + nh - 1 - n, x, n);
        dl[nh - 1] = last;
        return 0;
    }
    const int end = (pos + n - 1) % nh;
    const int head = n < end ? n : end;
    const int tail = n - head;
    copySamples(dl + nh - tail, x, tail);
    copySamples(dl + end - head, x + tail, head);
    return end + 1 == nh ? 0 : end + 1;
}

}  // namespace

void sp_fir_gen(const float* x, const float* h, float* y, int nh, int ny) {
    if (ny <= 0) return;
    if (nh <= 0) {
        zeroFill(y, ny);
        return;
    }
    sp_fir_gen_(x, h, y, nh, ny);
}

int sp_fir_filter(const float* x, const float* h, float* dl, int pos, float* y, int nh, int n) {
    if (n <= 0) return pos;
    if (nh <= 0) {
        zeroFill(y, n);
        return pos;
    }
    pos %= nh;
    if (pos < 0) pos += nh;
    for (int i = 0; i < n; ++i) {
        float sum = 0.0f;
        for (int j = 0; j < nh; ++j) {
            const int at = i - (nh - 1) + j;
            sum += h[j] * (at >= 0 ? x[at] : dl[(pos + nh - 1 + at) % nh]);
        }
        y[i] = sum;
    }
    return update_delay_line(x, dl, pos, nh, n);
}
