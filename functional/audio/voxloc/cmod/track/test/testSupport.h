/** What the tests share: the module and generator under test, stimuli, checks. */
#ifndef VOXLOC_TEST_SUPPORT_H
#define VOXLOC_TEST_SUPPORT_H

#include "tests.h"
#include "voxloc/unittestGenerator.h"

namespace voxloc_tests {

extern bool IsInitialized;         // the module is initialised by a test
extern AudioGenerator* AudioData;  // the current generator, or null
extern TrackerResult LastResult;   // what the module made of the last frame

enum Clip { Speech = 0, RoomNoise = 1 };

void setUp(int product);
void tearDown();

/** A fresh generator in the place of the current one: its frame is silent, its clip at the start.
 */
void replaceGenerator();

SourcePosition positionFromDegrees(float azimuth, float elevation, float range);

/** The next frame of a clip as heard from a source. */
float* nextFrame(Clip clip, const SourcePosition& source);

/** Hands a frame to the module; the result goes to LastResult. */
void process(const float* frame, unsigned inputFlags = 0);
void processFrames(int count, Clip clip, const SourcePosition& source);
void processSilentFrames(int count);

/** 0 when the bit of flags has that value, else 1 and a report. */
unsigned checkFlag(unsigned bit, int expected, unsigned flags);

/** The same for LastResult's flags. */
unsigned checkFlag(unsigned bit, int expected);

}  // namespace voxloc_tests

#endif
