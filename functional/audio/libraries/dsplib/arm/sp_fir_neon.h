/**
 * Single-precision FIR filtering: block filters on a buffer that holds its own history, and stream
 * filters that keep the history in a delay line of the caller's; each with a decimating form.
 *
 * Coefficients are applied in correlation order: the oldest sample of a window meets h[0], the
 * newest h[nh-1]. With nh = 2:
 *
 *     const float h[2] = {0.25f, 0.75f};      // impulse response {0.75, 0.25}, reversed
 *     sp_fir_gen(x, h, y, 2, ny);             // y[i] = 0.25·x[i] + 0.75·x[i+1], reads x[0 .. ny]
 *
 * so a filter with impulse response g is passed as h[j] = g[nh-1-j]; a symmetric one as it is.
 *
 * Ownership: all arrays are the caller's; nothing is allocated, and nothing is kept between calls
 * but what the caller keeps in the delay line, the position and the phase. Exactly the samples that
 * are named here are read, none beyond.
 *
 * Alignment: none is asserted, and none is needed beyond that of float.
 *
 * Rounding: the order in which the products of an output are added depends on nh alone. The same
 * window gives the same bits wherever it lies in a block, however a stream is cut into blocks, and
 * in the decimating forms. NaN and infinity reach the outputs whose windows hold them and no other.
 *
 * Threads: no shared state. Any calls may run at the same time if what one writes (y, dl, *begin)
 * is not touched by another.
 *
 * Broken preconditions that are called assertions below end the process with the expression, the
 * source path and the function name on standard error.
 */
#ifndef DSPLIB_SP_FIR_NEON_H
#define DSPLIB_SP_FIR_NEON_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Block filter: y[i] = sum over j < nh of h[j]·x[i+j], for 0 <= i < ny.
 *
 * Cost: nh·ny multiply-adds, four or more at a time.
 *
 * @param x   in, ny+nh-1 samples, oldest first
 * @param h   in, nh coefficients; may overlap x
 * @param y   out, ny samples. May be x itself (in place) or begin before x in the same array;
 *            must not begin inside x behind its start, nor overlap h
 * @param nh  taps; nh <= 0 writes ny zeros and reads nothing
 * @param ny  outputs; ny <= 0 does nothing
 */
void sp_fir_gen(const float* x, const float* h, float* y, int nh, int ny);

/**
 * Stream filter: filters n new samples behind the history in the delay line.
 *
 * Output i is the sum over j < nh of h[j]·s[i-(nh-1)+j], where s is the stream: s[0], s[1], ... are
 * x, and the s of negative index the history. A stream starts with a delay line of nh zeros and
 * position 0, and hands each call the position that the one before returned:
 *
 *     float dl[NH] = {0};
 *     int pos = 0;
 *     while (more()) pos = sp_fir_filter(x, h, dl, pos, y, NH, n);    // n may change
 *
 * After a call dl, read circularly from the returned position, holds the nh-1 most recent samples,
 * oldest first, and the slot before the position the sample before those.
 *
 * Cost: nh·n multiply-adds and block copies of at most nh samples (and, when the window fits, of
 * the history into 8 KiB of stack).
 *
 * @param x    in, n samples
 * @param h    in, nh coefficients; may overlap x
 * @param dl   in and out, the delay line, nh samples
 * @param pos  position in the delay line; outside [0, nh) it is reduced modulo nh (-1 is nh-1)
 * @param y    out, n samples; y and dl must overlap neither each other nor x nor h
 * @param nh   taps; nh <= 0 writes n zeros, touches nothing else and returns pos
 * @param n    samples; n <= 0 does nothing and returns pos. History and samples together, n+nh-1,
 *             are INT_MAX at most, asserted where there are both
 * @return     the new position, in [0, nh)
 */
int sp_fir_filter(const float* x, const float* h, float* dl, int pos, float* y, int nh, int n);

/**
 * Decimating block filter: every step-th output of sp_fir_gen,
 * y[m] = sum over j < nh of h[j]·x[m·step+j], for 0 <= m <= (n-1)/step.
 *
 *     sp_fir_gen_downsample(x, h, y, nh, 10, 3);    // 4 outputs: windows at x+0, x+3, x+6, x+9
 *
 * Cost: nh multiply-adds for each output that is kept.
 *
 * @param x     in, n+nh-1 samples, oldest first
 * @param h     in, nh coefficients; may overlap x
 * @param y     out, (n-1)/step+1 samples; may overlap x as for sp_fir_gen
 * @param nh    taps; nh <= 0 writes zeros and reads nothing
 * @param n     outputs before decimation; n <= 0 does nothing, before step is looked at
 * @param step  decimation factor; step <= 0 fails the assertion "step > 0"; 1 is sp_fir_gen
 */
void sp_fir_gen_downsample(const float* x, const float* h, float* y, int nh, int n, int step);

/**
 * Decimating stream filter: the outputs of sp_fir_filter at the samples *begin, *begin+step,
 * *begin+2·step, ... of the block, (n-1-*begin)/step+1 of them if *begin < n and none otherwise.
 * The delay line advances by all n samples, and *begin to where the next block continues the grid:
 *
 *     int begin = 0;                                                       // n = 10, step = 3:
 *     pos = sp_fir_filter_downsample(x, h, dl, pos, y, nh, 10, &begin, 3);  // outputs at 0, 3, 6,
 *                                                                           // 9; then begin is 2
 *
 * Cost: nh multiply-adds for each output that is kept, and the copies of sp_fir_filter.
 *
 * @param x      in, n samples
 * @param h      in, nh coefficients; may overlap x
 * @param dl     in and out, the delay line of sp_fir_filter, nh samples
 * @param pos    position in the delay line; outside [0, nh) it is reduced modulo nh
 * @param y      out; y and dl must overlap neither each other nor x nor h
 * @param nh     taps; nh <= 0 writes zeros, leaves dl alone and returns pos; the phase advances
 * @param n      samples; n <= 0 does nothing and returns pos, before anything else is looked at;
 *               bounded as for sp_fir_filter
 * @param begin  in and out, the phase, or null for phase 0 that is not carried on; a phase outside
 *               [0, step) fails the assertion "begin >= 0 && begin < step"
 * @param step   decimation factor; step <= 0 fails the assertion "step > 0"; 1 is sp_fir_filter
 * @return       the new position
 */
int sp_fir_filter_downsample(const float* x, const float* h, float* dl, int pos, float* y, int nh,
                             int n, int* begin, int step);

#ifdef __cplusplus
}
#endif

#endif
