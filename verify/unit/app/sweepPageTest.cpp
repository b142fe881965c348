// A sweep's maps and the page that shows them.

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <nlohmann/json.hpp>

#include "sweep/sweepPage.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int FramesAtPlace = 26;  // two of them settled
constexpr std::uint32_t VoiceOn = 1u << VOXLOC_FLAG_VOICE;

NamedArray arrayCalled(const char* name) {
    const VoxlocProduct& product = *voxloc_findProductByName(name);
    return {product.name, product.array, product.type};
}

/** A grid of 3 azimuths, 2 elevations and 2 ranges: place i errs by i tenths of a degree. */
SweepJob gridJob() {
    SweepJob job;
    job.choice.azimuth = Span{-20, 20};
    job.choice.elevation = Span{-10, 10};
    job.choice.range = Span{1, 3};
    job.choice.grid = GridSteps{3, 2, 2};
    job.framesAtPlace = FramesAtPlace;
    return job;
}

SweepRun runAt(const std::vector<Direction>& places, const char* array = "aster") {
    SweepRun run;
    run.array = arrayCalled(array);
    run.places = places;
    for (std::size_t i = 0; i < places.size(); ++i) {
        for (std::int32_t since = 0; since < FramesAtPlace; ++since) {
            SweepFrame frame;
            frame.place = static_cast<std::int32_t>(i);
            frame.since = since;
            frame.result = {static_cast<float>(places[i].azimuth + 0.1 * static_cast<double>(i)),
                            static_cast<float>(places[i].elevation),
                            static_cast<float>(places[i].range), 0.75f, VoiceOn};
            frame.hasEstimate = true;
            frame.isTalking = true;
            run.frames.push_back(frame);
        }
    }
    return run;
}

SweepRun gridRun(const char* array = "aster") {
    return runAt(placesOf(arrayCalled(array).array, gridJob().choice, {}, {}), array);
}

const MapCell* cellAt(const ErrorMap& map, int across, int up) {
    for (const MapCell& cell : map.cells) {
        if (cell.across == across && cell.up == up) return &cell;
    }
    return nullptr;
}

TEST(ErrorMaps, HaveACellForEachStepOfAGrid) {
    const ErrorMaps maps = errorMapsOf(gridRun(), gridJob());
    EXPECT_EQ(3, maps.elevation.across.cells);
    EXPECT_TRUE(maps.elevation.across.isGrid);
    EXPECT_EQ(-30.0, maps.elevation.across.low);
    EXPECT_EQ(30.0, maps.elevation.across.high);
    EXPECT_EQ(2, maps.range.up.cells);
    EXPECT_EQ(0.0, maps.range.up.low);
    EXPECT_EQ(4.0, maps.range.up.high);
    EXPECT_EQ(6u, maps.elevation.cells.size());
    EXPECT_EQ(6u, maps.range.cells.size());
}

TEST(ErrorMaps, ACellTakesItsTalkersTogether) {
    // Places are numbered azimuth first, then elevation, then range.
    const ErrorMaps maps = errorMapsOf(gridRun(), gridJob());
    const MapCell* right = cellAt(maps.elevation, 2, 0);  // places 2 and 8
    ASSERT_NE(nullptr, right);
    EXPECT_EQ(2u, right->figures.places);
    EXPECT_EQ(4u, right->figures.frameWithVoice.azimuth.count);
    EXPECT_NEAR(0.2, right->figures.frameWithVoice.azimuth.median, 1e-5);
    EXPECT_NEAR(0.8, right->figures.frameWithVoice.azimuth.ninety, 1e-5);
    const MapCell* far = cellAt(maps.range, 0, 1);  // places 6 and 9
    ASSERT_NE(nullptr, far);
    EXPECT_NEAR(0.6, far->figures.frameWithVoice.azimuth.median, 1e-5);
    EXPECT_NEAR(0.9, far->figures.frameWithVoice.azimuth.ninety, 1e-5);
}

TEST(ErrorMaps, CellsWithoutTalkersAreLeftOut) {
    SweepRun run = gridRun();
    const std::vector<Direction> all = run.places;
    run = runAt({all[0], all[4]});
    const ErrorMaps maps = errorMapsOf(run, gridJob());
    EXPECT_EQ(2u, maps.elevation.cells.size());
    EXPECT_NE(nullptr, cellAt(maps.elevation, 0, 0));
    EXPECT_NE(nullptr, cellAt(maps.elevation, 1, 1));
    EXPECT_EQ(nullptr, cellAt(maps.elevation, 1, 0));
}

TEST(ErrorMaps, RandomPlacesAreAllInOneCellOrAnother) {
    SweepJob job = gridJob();
    job.choice.grid.reset();
    job.choice.places = 150;
    const SweepRun run = runAt(placesOf(arrayCalled("aster").array, job.choice, {}, {}));
    const ErrorMaps maps = errorMapsOf(run, job);
    const SweepFigures all = figuresOf(run, FramesAtPlace);
    for (const ErrorMap* map : {&maps.elevation, &maps.range}) {
        EXPECT_EQ(12, map->across.cells);
        EXPECT_EQ(6, map->up.cells);
        std::size_t places = 0, estimates = 0, half = 0;
        for (const MapCell& cell : map->cells) {
            places += cell.figures.places;
            estimates += cell.figures.frameWithVoice.azimuth.count;
            half += cell.figures.halfAlways.azimuth.count;
        }
        EXPECT_EQ(150u, places);
        EXPECT_EQ(all.frameWithVoice.azimuth.count, estimates);
        EXPECT_EQ(all.halfAlways.azimuth.count, half);
    }
}

TEST(ErrorMaps, AFineGridIsTakenTogether) {
    SweepJob job = gridJob();
    job.choice.grid = GridSteps{MostMapCells + 1, 1, 1};
    const SweepRun run = runAt(placesOf(arrayCalled("aster").array, job.choice, {}, {}));
    const ErrorMaps maps = errorMapsOf(run, job);
    EXPECT_FALSE(maps.range.across.isGrid);
    EXPECT_LT(maps.range.across.cells, MostMapCells);
    EXPECT_EQ(1, maps.range.up.cells);
    EXPECT_EQ(2.0, maps.range.up.low);
}

TEST(ErrorMaps, AnAxisHoldsItsEnds) {
    const MapAxis axis{-10, 10, 4, false};
    EXPECT_EQ(0, axis.cellOf(-10));
    EXPECT_EQ(0, axis.cellOf(-5.001));
    EXPECT_EQ(1, axis.cellOf(-4.999));
    EXPECT_EQ(3, axis.cellOf(10));
    EXPECT_EQ(0, (MapAxis{2, 2, 1, true}.cellOf(2)));
}

/** The JSON that a page carries. */
Json dataIn(const std::string& page) {
    const std::string begin = "<script type=\"application/json\" id=\"sweep\">";
    const std::size_t from = page.find(begin) + begin.size();
    return Json::parse(page.substr(from, page.find("</script>", from) - from));
}

SweepPageData pageData(const char* array = "aster") {
    const SweepRun run = gridRun(array);
    SweepPageData data;
    data.command = "voxloc sweep </script><b>";
    data.results.push_back({array, "test generator", figuresOf(run, FramesAtPlace)});
    data.maps.push_back(errorMapsOf(run, gridJob()));
    data.arrays.push_back(run.array);
    return data;
}

TEST(SweepPage, HoldsTheFiguresOfTheSweep) {
    const SweepPageData data = pageData();
    const Json json = dataIn(sweepPageText(data));
    EXPECT_EQ(Json::parse(sweepJson(data.results)), json.at("sweeps"));
    EXPECT_EQ(voxloc_getVersion(), json.at("version"));
    EXPECT_EQ(GrossDegrees, json.at("gross_degrees"));
}

TEST(SweepPage, HoldsTheFiguresOfEachCell) {
    const SweepPageData data = pageData();
    const Json json = dataIn(sweepPageText(data));
    for (const char* kind : {"elevation", "range"}) {
        const ErrorMap& map = kind[0] == 'e' ? data.maps[0].elevation : data.maps[0].range;
        const Json& cells = json.at("maps").at(0).at(kind).at("cells");
        ASSERT_EQ(map.cells.size(), cells.size());
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const MapCell& cell = map.cells[i];
            const Json& shown = cells[i];
            EXPECT_EQ(cell.across, shown.at("across"));
            EXPECT_EQ(cell.up, shown.at("up"));
            EXPECT_EQ(cell.figures.places, shown.at("places"));
            const Spread& spread = cell.figures.halfAlways.azimuth;
            const Json& numbers = shown.at("half_second_always").at("azimuth");
            EXPECT_EQ(spread.count, numbers.at(0));
            EXPECT_NEAR(spread.median, numbers.at(1).get<double>(), 5.1e-5);
            EXPECT_NEAR(spread.ninety, numbers.at(2).get<double>(), 5.1e-5);
            EXPECT_NEAR(spread.gross, numbers.at(3).get<double>(), 5.1e-5);
        }
    }
}

TEST(SweepPage, SaysWhereThereIsNoElevation) {
    const Json json = dataIn(sweepPageText(pageData("foxglove")));
    EXPECT_FALSE(json.at("sweeps").at(0).at("geometry").at("has_elevation"));
    const Json& cell = json.at("maps").at(0).at("elevation").at("cells").at(0);
    EXPECT_EQ(Json::parse("[0, null, null, null]"), cell.at("frame_voice").at("elevation"));
    EXPECT_TRUE(cell.at("told").at("elevation").is_null());
}

TEST(SweepPage, NoNameEndsItsElement) {
    SweepPageData data = pageData();
    data.results[0].array = "</script><script>alert(1)</script>";
    const std::string page = sweepPageText(data);
    EXPECT_EQ(std::string::npos, page.find("alert(1)</script>"));
    EXPECT_EQ(data.results[0].array, dataIn(page).at("sweeps").at(0).at("array"));
    EXPECT_EQ(data.command, dataIn(page).at("command"));
    EXPECT_EQ(page.find("<template"), page.rfind("<template"));  // one array, one drawing
}

TEST(SweepPage, NamesNeedNotBeUtf8) {
    SweepPageData data = pageData();
    data.results[0].array = "desk\xff";
    data.command += " desk\xff.json";
    const Json json = dataIn(sweepPageText(data));
    EXPECT_EQ("desk\xef\xbf\xbd", json.at("sweeps").at(0).at("array"));
    EXPECT_NE(std::string::npos, json.at("command").get<std::string>().find(" desk\xef\xbf\xbd"));
}

TEST(SweepPage, TheCommandIsWhatMakesTheSameFigures) {
    CLI::App command("", "sweep");
    std::vector<std::string> arrays;
    std::string azimuth, csv, report, unused;
    bool isAll = false;
    command.add_option("-a,--array", arrays);
    command.add_flag("--whole-search", isAll);
    command.add_option("--azimuth", azimuth);
    command.add_option("--range", unused);
    command.add_option("--csv", csv);
    addSweepPageOption(command, report);
    std::vector<std::string> words{"my desk's.json",
                                   "-a",
                                   "aster",
                                   "-a",
                                   "out.html",
                                   "--report",
                                   "a.csv",
                                   "--csv",
                                   "--azimuth=-10,10",
                                   "--whole-search"};
    command.parse(words);  // takes them from the back
    EXPECT_EQ("out.html", report);
    EXPECT_EQ(
        "voxloc sweep --array aster --array 'my desk'\\''s.json' --whole-search "
        "--azimuth=-10,10",
        sweepCommandLine(command));
}

}  // namespace
