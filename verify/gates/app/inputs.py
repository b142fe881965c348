"""Small inputs for whole-program checks, made of bytes."""

import argparse
import random
import struct
import sys
import wave

FRAME = 2048
ASTER = 0
ASTER_CHANNELS = 6


def program():
    """The words that start the program under test: --program [EMULATOR ...] PROGRAM --"""
    if sys.argv[1] != "--program":
        sys.exit("usage: SCRIPT --program [EMULATOR ...] PROGRAM -- [OPTIONS]")
    end = sys.argv.index("--")
    return sys.argv[2:end]


def options(parser=None):
    """What follows."""
    parser = parser or argparse.ArgumentParser()
    return parser.parse_args(sys.argv[sys.argv.index("--") + 1:])


def record(channels, bits=24, flags=0, seed=1):
    """One frame of a recording: noise."""
    noise = random.Random(seed)
    samples = [float(noise.randint(-100000, 100000)) for _ in range(channels * FRAME)]
    return struct.pack("<II", bits, flags) + struct.pack(f"<{len(samples)}f", *samples)


def recording(frames, product=ASTER, channels=ASTER_CHANNELS):
    """A recording with that many frames."""
    return bytes([172, 1, product, channels]) + b"".join(
        record(channels, seed=n) for n in range(frames))


def write_wav(path, channels, samples, rate=48000):
    """16-bit noise."""
    noise = random.Random(7)
    with wave.open(str(path), "wb") as out:
        out.setnchannels(channels)
        out.setsampwidth(2)
        out.setframerate(rate)
        out.writeframes(bytes(noise.randrange(256) for _ in range(2 * channels * samples)))
