/**
 * Single-precision FIR filtering: a stateless block filter and a stream filter with a delay line.
 *
 * Coefficients are applied in correlation order: the oldest sample of a window meets h[0], the
 * newest h[nh-1]. With nh = 2:
 *
 *     y[i] = h[0]*x[i] + h[1]*x[i+1]
 *
 * so a filter with impulse response g is passed reversed, h[j] = g[nh-1-j]. All arrays belong to
 * the caller; nothing is kept between calls.
 */
#ifndef DSPLIB_SP_FIR_NEON_H
#define DSPLIB_SP_FIR_NEON_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Block filter: y[i] = sum over j < nh of h[j]·x[i+j], for i < ny.
 *
 * @param x   in, ny+nh-1 samples
 * @param h   in, nh coefficients
 * @param y   out, ny samples; must not overlap x or h
 * @param nh  taps; nh <= 0 writes ny zeros
 * @param ny  outputs; ny <= 0 writes nothing
 */
void sp_fir_gen(const float* x, const float* h, float* y, int nh, int ny);

/**
 * Stream filter: filters n new samples behind the history in the caller's delay line.
 *
 * Output i is the sum over j < nh of h[j]·s[i-(nh-1)+j], where s is the history followed by x.
 * Start a stream with a delay line of nh zeros and position 0, and hand each call the position that
 * the one before returned.
 *
 * @param x    in, n samples
 * @param h    in, nh coefficients
 * @param dl   in and out, the delay line, nh samples
 * @param pos  position in the delay line; outside [0, nh) it is reduced modulo nh
 * @param y    out, n samples; must not overlap any input
 * @param nh   taps; nh <= 0 writes n zeros and returns pos
 * @param n    samples; n <= 0 writes nothing and returns pos
 * @return     the new position
 */
int sp_fir_filter(const float* x, const float* h, float* dl, int pos, float* y, int nh, int n);

#ifdef __cplusplus
}
#endif

#endif
