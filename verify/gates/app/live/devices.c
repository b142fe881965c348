/*
 * Loaded in front of ALSA's library, takes the device away and loses samples:
 *
 *     VOXLOC_OVERRUN_AT=n    the n-th read finds that samples were lost
 *     VOXLOC_GONE_AT=n       the n-th read finds no device any more, and the next
 *     VOXLOC_GONE_OPENS=m    m attempts to open it fail
 *     VOXLOC_BUSY=1          somebody else has it
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdlib.h>

typedef long (*Read)(void* pcm, void* buffer, unsigned long size);
typedef int (*Open)(void** pcm, const char* name, int stream, int mode);

static int reads, opensThatFail;

static int numberFrom(const char* name) {
    const char* text = getenv(name);
    return text == NULL ? 0 : atoi(text);
}

long snd_pcm_readi(void* pcm, void* buffer, unsigned long size) {
    ++reads;
    if (reads == numberFrom("VOXLOC_OVERRUN_AT")) return -EPIPE;
    if (reads == numberFrom("VOXLOC_GONE_AT")) {
        opensThatFail = numberFrom("VOXLOC_GONE_OPENS");
        return -ENODEV;
    }
    Read real;
    *(void**)&real = dlsym(RTLD_NEXT, "snd_pcm_readi");
    return real(pcm, buffer, size);
}

int snd_pcm_open(void** pcm, const char* name, int stream, int mode) {
    if (opensThatFail > 0) {
        --opensThatFail;
        return -ENODEV;
    }
    if (numberFrom("VOXLOC_BUSY") != 0) return -EBUSY;
    Open real;
    *(void**)&real = dlsym(RTLD_NEXT, "snd_pcm_open");
    return real(pcm, name, stream, mode);
}
