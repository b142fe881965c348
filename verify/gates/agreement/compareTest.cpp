/** The comparison sees what it is there to see. */
#include "compare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "fingerprint.h"
#include "scenario.h"

namespace {

constexpr int Frames = 400;
constexpr float Angle = 12.5f;

/** A small dump with one table, Frames frames and one vector. */
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
    return dump;
}

class Agreement : public testing::Test {
  protected:
    MachineDump a = sampleDump("a"), b = sampleDump("b");

    FrameDump& frame(int f) { return b.frames.at({0, f}); }

    bool agree() { return compare(a, b).failures.empty(); }
};

TEST_F(Agreement, equalDumpsAgreeWithoutAnyCause) {
    const Comparison pair = compare(a, b);
    EXPECT_TRUE(pair.failures.empty());
    EXPECT_TRUE(pair.causes.empty());
    EXPECT_EQ(pair.frames, Frames);
    EXPECT_EQ(pair.framesOnATie + pair.framesWithOtherResults + pair.framesWithOtherStages, 0);
    EXPECT_EQ(pair.vectors, 1);
    EXPECT_EQ(pair.vectorsThatDiffer, 0);
}

TEST_F(Agreement, anotherFlagFails) {
    frame(7).flags ^= 1;
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, anotherInputFails) {
    frame(7).stages[0].exact = 99;
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, qualityMayDifferByItsBoundAndNoMore) {
    frame(7).quality += 0.9e-4f;
    EXPECT_TRUE(agree());
    EXPECT_NEAR(compare(a, b).largestQualityDifference, 0.9e-4, 1e-6);
    EXPECT_EQ(compare(a, b).framesWithOtherResults, 1);
    frame(7).quality += 0.2e-4f;
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, qualityThatIsNotANumberFails) {
    frame(7).quality = NAN;
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, aNeighbouringGridPointIsFineOnATieOnly) {
    frame(7).azimuthIndex = 101;
    EXPECT_FALSE(agree());
    frame(7).azimuthMargin = 1e-4f;
    const Comparison pair = compare(a, b);
    EXPECT_TRUE(pair.failures.empty());
    EXPECT_EQ(pair.framesOnATie, 1);
    EXPECT_EQ(pair.notes.size(), 1u);
}

TEST_F(Agreement, twoGridStepsFailEvenOnATie) {
    frame(7).elevationIndex = 52;
    frame(7).elevationMargin = 0.0f;
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, anotherRangeIsFineOnATieOnly) {
    frame(7).range = 1.7f;
    EXPECT_FALSE(agree());
    frame(7).rangeMargin = 0.0f;
    EXPECT_TRUE(agree());
    frame(7).range = 1.9f;
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, moreThanOneFrameInTwoHundredOnATieFails) {
    for (int f = 0; f < 2; ++f) {
        frame(f).azimuthIndex = 99;
        frame(f).azimuthMargin = 0.0f;
    }
    EXPECT_TRUE(agree());
    frame(2) = frame(0);
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, arraysThatDifferInDenormalsOnlyAreNamedSo) {
    frame(7).stages[1].exact = 99;
    const Comparison pair = compare(a, b);
    EXPECT_TRUE(pair.failures.empty());
    ASSERT_EQ(pair.causes.size(), 1u);
    EXPECT_NE(pair.causes.begin()->first.find("denormal"), std::string::npos);
    EXPECT_EQ(pair.framesWithOtherStages, 1);
}

TEST_F(Agreement, arraysThatDifferForNoKnownCauseFail) {
    frame(7).stages[1] = {"FftResult", 99, 99};
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, fusedArithmeticExplainsOtherArraysAndOutputs) {
    b.fused = true;
    frame(7).stages[1] = {"FftResult", 99, 99};
    b.vectors["fft-4-0"][2] = 99;
    EXPECT_TRUE(agree());
    EXPECT_EQ(compare(a, b).vectorsThatDiffer, 1);
    frame(7).flags ^= 1;
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, anAnglesLastBitIsFineWhenTheTablesDifferThere) {
    frame(7).azimuth = std::nextafter(Angle, 90.0f);
    EXPECT_FALSE(agree());
    b.tables[0][1].exact = 99;
    EXPECT_TRUE(agree());
    frame(7).azimuth = Angle + 1e-4f;
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, otherAngleTablesExplainOtherSumsButNothingBefore) {
    b.tables[0][1].exact = 99;
    frame(7).stages[2] = {"AzimuthRangeResult", 99, 99};
    EXPECT_TRUE(agree());
    frame(6).stages[1] = {"FftResult", 99, 99};
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, anyOtherTableThatDiffersFails) {
    b.tables[0][0].exact = 99;
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, oneBitOfAnOutputFails) {
    b.vectors["fft-4-0"][3] ^= 1;
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, tinyOutputsMayDifferByFlushedNumbersOnly) {
    a.vectors["tiny-fft-4-0"] = {0x00000001, 0x00800001};  // denormal, and about FLT_MIN
    b.vectors["tiny-fft-4-0"] = {0x00000000, 0x00800000};
    EXPECT_TRUE(agree());
    EXPECT_EQ(compare(a, b).causes.size(), 1u);
    b.vectors["tiny-fft-4-0"][1] = 0x08000000;
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, anglesThatAreNotANumberAreEqual) {
    a.frames.at({0, 7}).azimuth = frame(7).azimuth = NAN;
    EXPECT_TRUE(agree());
    EXPECT_EQ(compare(a, b).framesWithOtherResults, 0);
    frame(7).azimuth = Angle;
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, whateverIsMissingFails) {
    b.frames.erase({0, 7});
    EXPECT_FALSE(agree());
    b = sampleDump("b");
    b.tables.clear();
    EXPECT_FALSE(agree());
    b = sampleDump("b");
    b.vectors.clear();
    EXPECT_FALSE(agree());
    b = sampleDump("b");
    frame(7).stages.clear();
    EXPECT_FALSE(agree());
}

TEST_F(Agreement, twoEmptyDumpsFail) {
    a = b = MachineDump();
    EXPECT_FALSE(agree());
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
  protected:
    const std::string path = testing::TempDir() + "agreement-dumpFileTest";

    void write(const char* text) { std::ofstream(path) << text; }
    void TearDown() override { std::remove(path.c_str()); }
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
