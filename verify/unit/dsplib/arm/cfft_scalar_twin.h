/** The FFT compiled a second time, on the scalar back end of the vector layer. */
#ifndef VERIFY_CFFT_SCALAR_TWIN_H
#define VERIFY_CFFT_SCALAR_TWIN_H

/** Transforms of 32 to 8192 elements on plain C++ lanes, four or two of them. */
void scalarForward4(int N, int log2N, const float* x, float* y);
void scalarInverse4(int N, int log2N, const float* x, float* y);
void scalarForward2(int N, int log2N, const float* x, float* y);
void scalarInverse2(int N, int log2N, const float* x, float* y);

#endif
