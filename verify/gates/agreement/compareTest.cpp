/** The comparison sees what it is there to see. */
#include "compare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <ostream>
#include <stdexcept>

#include "fingerprint.h"
#include "kit/temporaryFile.h"
#include "scenario.h"

namespace {

constexpr int Frames = 400;
constexpr float Angle = 12.5f;

/** A small dump with two tables, Frames frames and an output. */
MachineDump sampleDump(const char* machine) {
    MachineDump dump;
    dump.machine = machine;
    dump.tables[0] = {{"Ranges", 1, 1}, {"AzimuthAngles", 2, 2}};
    for (int f = 0; f < Frames; ++f) {
        FrameDump frame = {0, Angle, 3.0f, 1.5f, 0.75f, 0x81, 100, 50, 0.1f, 0.1f, 0.1f, {}};
        frame.stages = {{"input", 3, 3}, {"FftResult", 4, 4}, {"AzimuthRangeResult", 5, 5}};
        dump.frames[{0, f}] = frame;
    }
    dump.vectors["fft-4-0"] = {1, 2, 3, 4};
    dump.vectors["tiny-fft-4-0"] = {0x00000001, 0x00800001};  // denormal, and about FLT_MIN
    return dump;
}

FrameDump& frame(MachineDump& dump, int f) {
    return dump.frames.at({0, f});
}

/** What one machine may have otherwise than the other. */
struct Difference {
    const char* name;
    bool isFine;
    void (*make)(MachineDump& b, FrameDump& f);  // f: a frame of b
};

const Difference Differences[] = {
    {"nothing", true, [](auto&, auto&) {}},
    {"aFlag", false, [](auto&, auto& f) { f.flags ^= 1; }},
    {"aFlagOnFusedArithmetic", false, [](auto& b, auto& f) { b.fused = true, f.flags ^= 1; }},
    {"theInput", false, [](auto&, auto& f) { f.stages[0].exact = 99; }},
    {"qualityWithinItsBound", true, [](auto&, auto& f) { f.quality += 0.9e-4f; }},
    {"qualityBeyondItsBound", false, [](auto&, auto& f) { f.quality += 1.1e-4f; }},
    {"qualityThatIsNotANumber", false, [](auto&, auto& f) { f.quality = NAN; }},
    {"aNeighbouringAzimuth", false, [](auto&, auto& f) { f.azimuthIndex = 101; }},
    {"aNeighbouringAzimuthOnATie", true,
     [](auto&, auto& f) { f.azimuthIndex = 101, f.azimuthMargin = 1e-4f; }},
    {"aNeighbouringElevation", false, [](auto&, auto& f) { f.elevationIndex = 51; }},
    {"aNeighbouringElevationOnATie", true,
     [](auto&, auto& f) { f.elevationIndex = 51, f.elevationMargin = 0; }},
    {"twoGridStepsOnATie", false,
     [](auto&, auto& f) { f.elevationIndex = 52, f.elevationMargin = 0; }},
    {"aNeighbouringRange", false, [](auto&, auto& f) { f.range = 1.7f; }},
    {"aNeighbouringRangeOnATie", true, [](auto&, auto& f) { f.range = 1.7f, f.rangeMargin = 0; }},
    {"twoRangesOnATie", false, [](auto&, auto& f) { f.range = 1.9f, f.rangeMargin = 0; }},
    {"rangeThatIsNotANumber", false, [](auto&, auto& f) { f.range = NAN, f.rangeMargin = 0; }},
    {"denormalsOfAnArray", true, [](auto&, auto& f) { f.stages[1].exact = 99; }},
    {"anArray", false,
     [](auto&, auto& f) {
         f.stages[1] = {"FftResult", 99, 99};
     }},
    {"anArrayOnFusedArithmetic", true,
     [](auto& b, auto& f) {
         b.fused = true, f.stages[1] = {"FftResult", 99, 99};
     }},
    {"theLastBitOfAnAngle", false,
     [](auto&, auto& f) { f.azimuth = std::nextafter(Angle, 90.0f); }},
    {"theLastBitOfAnAngleAndItsTable", true,
     [](auto& b, auto& f) { b.tables[0][1].exact = 99, f.azimuth = std::nextafter(Angle, 90.0f); }},
    {"moreOfAnAngleAndItsTable", false,
     [](auto& b, auto& f) { b.tables[0][1].exact = 99, f.azimuth = Angle + 1e-4f; }},
    {"anAngleThatIsNotANumber", false, [](auto&, auto& f) { f.azimuth = NAN; }},
    {"sumsAfterOtherAngles", true,
     [](auto& b, auto& f) {
         b.tables[0][1].exact = 99, f.stages[2] = {"AzimuthRangeResult", 99, 99};
     }},
    {"anArrayBeforeTheAngles", false,
     [](auto& b, auto& f) {
         b.tables[0][1].exact = 99, f.stages[1] = {"FftResult", 99, 99};
     }},
    {"anotherTable", false, [](auto& b, auto&) { b.tables[0][0].exact = 99; }},
    {"oneBitOfAnOutput", false, [](auto& b, auto&) { b.vectors["fft-4-0"][3] ^= 1; }},
    {"anOutputOnFusedArithmetic", true,
     [](auto& b, auto&) { b.fused = true, b.vectors["fft-4-0"][2] = 99; }},
    {"aFlushedOutput", true,
     [](auto& b, auto&) {
         b.vectors["tiny-fft-4-0"] = {0x00000000, 0x00800000};
     }},
    {"moreOfATinyOutput", false, [](auto& b, auto&) { b.vectors["tiny-fft-4-0"][1] = 0x08000000; }},
    {"aShorterOutputOnFusedArithmetic", false,
     [](auto& b, auto&) { b.fused = true, b.vectors["fft-4-0"].pop_back(); }},
    {"aMissingFrame", false,
     [](auto& b, auto&) {
         b.frames.erase({0, 7});
     }},
    {"aFrameOfAnotherNumber", false,
     [](auto& b, auto& f) {
         b.frames[{0, Frames}] = f, b.frames.erase({0, 7});
     }},
    {"missingTables", false, [](auto& b, auto&) { b.tables.clear(); }},
    {"aMissingTable", false, [](auto& b, auto&) { b.tables[0].pop_back(); }},
    {"missingOutputs", false, [](auto& b, auto&) { b.vectors.clear(); }},
    {"missingArrays", false, [](auto&, auto& f) { f.stages.clear(); }},
};

void PrintTo(const Difference& difference, std::ostream* stream) {
    *stream << difference.name;
}

class Agreement : public testing::TestWithParam<Difference> {};

TEST_P(Agreement, isFoundOrNot) {
    const MachineDump a = sampleDump("a");
    MachineDump b = sampleDump("b");
    GetParam().make(b, frame(b, 7));
    EXPECT_EQ(compare(a, b).failures.empty(), GetParam().isFine);
    EXPECT_EQ(compare(b, a).failures.empty(), GetParam().isFine);
}

INSTANTIATE_TEST_SUITE_P(Differing, Agreement, testing::ValuesIn(Differences),
                         [](const auto& row) { return std::string(row.param.name); });

class Counts : public testing::Test {
  protected:
    MachineDump a = sampleDump("a"), b = sampleDump("b");
};

TEST_F(Counts, areZeroForEqualDumps) {
    const Comparison pair = compare(a, b);
    EXPECT_TRUE(pair.causes.empty());
    EXPECT_EQ(pair.frames, Frames);
    EXPECT_EQ(pair.framesOnATie + pair.framesWithOtherResults + pair.framesWithOtherStages, 0);
    EXPECT_EQ(pair.vectors, 2);
    EXPECT_EQ(pair.vectorsThatDiffer, 0);
}

TEST_F(Counts, sayWhatDiffers) {
    frame(b, 7).quality += 0.9e-4f;
    frame(b, 8).azimuthIndex = 101;
    frame(b, 8).azimuthMargin = 0.0f;
    frame(b, 9).stages[1].exact = 99;
    b.vectors["tiny-fft-4-0"] = {0x00000000, 0x00800000};
    const Comparison pair = compare(a, b);
    EXPECT_NEAR(pair.largestQualityDifference, 0.9e-4, 1e-6);
    EXPECT_EQ(pair.framesWithOtherResults, 1);
    EXPECT_EQ(pair.framesOnATie, 1);
    EXPECT_EQ(pair.notes.size(), 1u);
    EXPECT_EQ(pair.framesWithOtherStages, 1);
    EXPECT_EQ(pair.vectorsThatDiffer, 1);
    ASSERT_EQ(pair.causes.size(), 2u);
    EXPECT_NE(pair.causes.begin()->first.find("denormal"), std::string::npos);
}

TEST_F(Counts, ofTiesAreOneFrameInTwoHundredAtMost) {
    for (int f = 0; f < 2; ++f) {
        frame(b, f).azimuthIndex = 99;
        frame(b, f).azimuthMargin = 0.0f;
    }
    EXPECT_TRUE(compare(a, b).failures.empty());
    frame(b, 2) = frame(b, 0);
    EXPECT_FALSE(compare(a, b).failures.empty());
}

TEST_F(Counts, takeAnglesThatAreNotANumberForEqual) {
    frame(a, 7).azimuth = frame(b, 7).azimuth = NAN;
    EXPECT_TRUE(compare(a, b).failures.empty());
    EXPECT_EQ(compare(a, b).framesWithOtherResults, 0);
}

TEST(EmptyDumps, fail) {
    EXPECT_FALSE(compare(MachineDump(), MachineDump()).failures.empty());
}

TEST(Fingerprint, changesWithOneBitOfAnyValue) {
    const float values[] = {1.0f, 0.0f, 0x1p-140f};
    const float lastBit[] = {1.0f + 0x1p-23f, 0.0f, 0x1p-140f};
    const float otherZero[] = {1.0f, -0.0f, 0x1p-140f};
    EXPECT_NE(fingerprint(values, 3).exact, fingerprint(lastBit, 3).exact);
    EXPECT_NE(fingerprint(values, 3).withoutTiny, fingerprint(lastBit, 3).withoutTiny);
    EXPECT_NE(fingerprint(values, 3).exact, fingerprint(otherZero, 3).exact);
    EXPECT_NE(fingerprint(values, 3).exact, fingerprint(values, 2).exact);
}

TEST(Fingerprint, takesNumbersBelowTwoToTheMinusHundredForZeroWhereAsked) {
    const float denormal[] = {0x1p-140f, -0x1.8p-101f}, zero[] = {0.0f, 0.0f};
    const float small[] = {0x1p-100f, 0.0f};
    EXPECT_NE(fingerprint(denormal, 2).exact, fingerprint(zero, 2).exact);
    EXPECT_EQ(fingerprint(denormal, 2).withoutTiny, fingerprint(zero, 2).withoutTiny);
    EXPECT_NE(fingerprint(small, 2).withoutTiny, fingerprint(zero, 2).withoutTiny);
}

TEST(Fingerprint, knowsOneNotANumberOnly) {
    const float positive = NAN, negative = -NAN;
    EXPECT_EQ(fingerprint(&positive, 1).exact, fingerprint(&negative, 1).exact);
}

class DumpFile : public testing::Test {
  private:
    const TemporaryFile file;

  protected:
    const std::string path = file.path();

    void write(const char* text) { std::ofstream(path) << text; }
};

TEST_F(DumpFile, isReadBack) {
    write(
        "machine board fused\n"
        "table 2 Ranges 1f 2f\n"
        "frame 2 11 3 3f800000 40000000 40400000 40800000 81 64 1a 3f000000 3e800000 7f7fffff\n"
        "stage 2 11 input 3f 4f\n"
        "vector fft-2-0 00000001 80000000\n"
        "end\n");
    const MachineDump dump = readDump(path);
    EXPECT_EQ(dump.machine, "board");
    EXPECT_TRUE(dump.fused);
    EXPECT_EQ(dump.tables.at(2).at(0).name, "Ranges");
    EXPECT_EQ(dump.tables.at(2).at(0).withoutTiny, 0x2fu);
    const FrameDump& frame = dump.frames.at({2, 11});
    EXPECT_EQ(frame.content, 3u);
    EXPECT_EQ(frame.azimuth, 1.0f);
    EXPECT_EQ(frame.elevation, 2.0f);
    EXPECT_EQ(frame.range, 3.0f);
    EXPECT_EQ(frame.quality, 4.0f);
    EXPECT_EQ(frame.flags, 0x81u);
    EXPECT_EQ(frame.azimuthIndex, 100);
    EXPECT_EQ(frame.elevationIndex, 26);
    EXPECT_EQ(frame.azimuthMargin, 0.5f);
    EXPECT_EQ(frame.elevationMargin, 0.25f);
    EXPECT_EQ(frame.stages.at(0).exact, 0x3fu);
    EXPECT_EQ(dump.vectors.at("fft-2-0"), (std::vector<std::uint32_t>{1, 0x80000000u}));
}

TEST_F(DumpFile, thatIsMissingCutShortOrBrokenIsAnError) {
    EXPECT_THROW(readDump(path + "-missing"), std::runtime_error);
    write("machine board unfused\n");
    EXPECT_THROW(readDump(path), std::runtime_error);
    write("machine board unfused\nframe 2 11 3 3f80\nend\n");
    EXPECT_THROW(readDump(path), std::runtime_error);
    write("stage 2 11 input 3f 4f\nend\n");
    EXPECT_THROW(readDump(path), std::runtime_error);
    write("nonsense\nend\n");
    EXPECT_THROW(readDump(path), std::runtime_error);
}

}  // namespace
