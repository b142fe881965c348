#include "console/eventlog.h"
#include "testSupport.h"

namespace voxloc_tests {

namespace {

struct Entry {
    unsigned (*test)();
    const char *running, *finished;
};

// In the order of registration.
constexpr Entry Entries[] = {
    {stableSpeakerTestAster, "Running stable speaker test\n", "Finished stable speaker test\n"},
    {stableSpeakerTestBramble, "Running stable speaker bramble test\n",
     "Finished stable speaker bramble test\n"},
    {stableSpeakerTestCinder, "Running stable speaker cinder test\n",
     "Finished stable speaker cinder test\n"},
    // Finishes as cinder, deliberately: logs are matched against it.
    {stableSpeakerTestDovetail, "Running stable speaker dovetail test\n",
     "Finished stable speaker cinder test\n"},
    {stableSpeakerTestElmwood, "Running stable speaker elmwood test\n",
     "Finished stable speaker elmwood test\n"},
    {stableSpeakerTestFoxglove, "Running stable speaker foxglove test\n",
     "Finished stable speaker foxglove test\n"},
    {stableSpeakerTestGannet, "Running stable speaker gannet test\n",
     "Finished stable speaker gannet test\n"},
    {vadOnTest, "Running VAD on test\n", "Finished VAD on test\n"},
    {vadHangoverTest, "Running VAD hangover test\n", "Finished VAD hangover test\n"},
    {timeDomainVadTest, "Running TD VAD test\n", "Finished TD VAD test\n"},
    {soundActivityTest, "Running SAD test\n", "Finished SAD test\n"},
    {signalEnergyTest, "Running signal energy test\n", "Finished signal energy test\n"},
    {inputFlagTest, "Running input flag test\n", "Finished input flag test\n"},
    {farEndVadTest, "Running FE VAD test\n", "Finished FE VAD test\n"},
    {ultraSoundDistortionTest, "Running ultrasound test\n", "Finished ultrasound test\n"},
    {roomNoiseTest, "Running room noise test\n", "Finished room noise test\n"},
    {ultraSoundLevelTest, "Running ultra sound level test\n", "Finished ultra sound level test\n"},
    {cinderElevationTest, "Running cinder elevation test\n", "Finished cinder elevation test\n"},
};

}  // namespace

unsigned runAllUnitTests() {
    unsigned errors = 0;
    setUp(PRODUCT_ASTER);
    for (const Entry& entry : Entries) {
        eventlogputs(entry.running);
        errors += entry.test();
        eventlogputs(entry.finished);
    }
    eventlog("\n\nTest summary: %d error(s)\n\n", static_cast<int>(errors));
    setUp(PRODUCT_ASTER);
    return errors;
}

}  // namespace voxloc_tests
