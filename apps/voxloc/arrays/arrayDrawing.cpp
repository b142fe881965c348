#include "arrays/arrayDrawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "arrays/resolution.h"
#include "common/table.h"

namespace {

constexpr double Width = 960.0, Height = 640.0;
constexpr int MapColumns = 45, MapRows = 27;

constexpr const char* Style = R"(  <style>
    .bg { fill: #fff } text { fill: #222; font: 13px sans-serif } .title { font-weight: bold }
    .small { font-size: 11px; fill: #555 } .panel { fill: #f4f4f4; stroke: #bbb }
    .mic { fill: #222 } .number { fill: #fff; font-size: 10px; text-anchor: middle }
    .azimuth { stroke: #0b6e99; stroke-width: 2.5 } .elevation { stroke: #c2410c; stroke-width: 2.5;
    stroke-dasharray: 5 3 } .loudspeaker { fill: none; stroke: #777; stroke-width: 2 }
    .end { text-anchor: end } .middle { text-anchor: middle }
    @media (prefers-color-scheme: dark) {
      .bg { fill: #16181c } text { fill: #e4e4e4 } .small { fill: #aaa }
      .panel { fill: #22262c; stroke: #555 } .mic { fill: #eee } .number { fill: #111 }
      .azimuth { stroke: #58b4dc } .elevation { stroke: #f59e5b } .loudspeaker { stroke: #aaa }
    }
  </style>
)";

std::string at(const char* name, double value) {
    return std::string(" ") + name + "=\"" + fixed(value, 1) + "\"";
}

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '&') {
            result += "&amp;";
        } else if (c == '<') {
            result += "&lt;";
        } else if (c == '>') {
            result += "&gt;";
        } else {
            result += c;
        }
    }
    return result;
}

std::string label(double x, double y, const std::string& text, const char* style = "") {
    return "  <text" + at("x", x) + at("y", y) + " class=\"" + style + "\">" + escaped(text) +
           "</text>\n";
}

std::string line(double x1, double y1, double x2, double y2, const char* style) {
    return "  <line" + at("x1", x1) + at("y1", y1) + at("x2", x2) + at("y2", y2) + " class=\"" +
           style + "\"/>\n";
}

std::string box(double x, double y, double width, double height, const std::string& rest) {
    return "  <rect" + at("x", x) + at("y", y) + at("width", width) + at("height", height) + rest +
           "/>\n";
}

struct Point {
    double across, up;  // metres
};

/** A panel that shows the array from one side, with one scale for both directions. */
class View {
  public:
    View(const VoxlocArray& array, double left, double top, bool isFromAbove)
        : array_(array), left_(left), top_(top), isFromAbove_(isFromAbove) {
        for (std::int32_t c = 0; c < array.channels; ++c) include(array.microphone[c]);
        if (array.attenuateLoudspeaker != 0) include(array.loudspeaker);
        const double across = most_.across - least_.across, up = most_.up - least_.up;
        scale_ = std::min((PanelWidth - 2 * Margin) / std::max(across, 0.02),
                          (PanelHeight - 2 * Margin) / std::max(up, 0.02));
    }

    std::string draw() const {
        std::string svg = label(
            left_, top_ - 10.0,
            isFromAbove_ ? "From above, the talker below" : "From the front, as the talker sees it",
            "title");
        svg += box(left_, top_, PanelWidth, PanelHeight, " class=\"panel\"");
        svg += pairs(array_.azimuthPair, array_.azimuthPairs, "azimuth", -2.0);
        svg += pairs(array_.elevationPair, array_.elevationPairs, "elevation", 2.0);
        for (std::int32_t c = 0; c < array_.channels; ++c) svg += microphone(c);
        if (array_.attenuateLoudspeaker != 0) {
            const Point p = onPaper(array_.loudspeaker);
            svg += "  <circle" + at("cx", p.across) + at("cy", p.up) +
                   " r=\"12\" class=\"loudspeaker\"><title>loudspeaker</title></circle>\n";
        }
        return svg + ruler();
    }

    static constexpr double PanelWidth = 440.0, PanelHeight = 200.0, Margin = 32.0;

  private:
    Point seen(const Position& p) const {
        const double depth = static_cast<double>(p.x), height = static_cast<double>(p.z);
        return {static_cast<double>(p.y), isFromAbove_ ? -depth : height};
    }

    void include(const Position& p) {
        const Point point = seen(p);
        least_ = {std::min(least_.across, point.across), std::min(least_.up, point.up)};
        most_ = {std::max(most_.across, point.across), std::max(most_.up, point.up)};
    }

    Point onPaper(const Position& p) const {
        const Point point = seen(p);
        return {
            left_ + PanelWidth / 2 + scale_ * (point.across - 0.5 * (least_.across + most_.across)),
            top_ + PanelHeight / 2 - scale_ * (point.up - 0.5 * (least_.up + most_.up))};
    }

    /** Side by side where a pair serves both searches. */
    std::string pairs(const VoxlocPair* pairs, std::int32_t count, const char* style,
                      double aside) const {
        std::string svg;
        for (std::int32_t i = 0; i < count; ++i) {
            const Point a = onPaper(array_.microphone[pairs[i].first]);
            const Point b = onPaper(array_.microphone[pairs[i].second]);
            const double length = std::hypot(b.across - a.across, b.up - a.up);
            const double dx = length > 0.0 ? aside * (b.up - a.up) / length : 0.0;
            const double dy = length > 0.0 ? -aside * (b.across - a.across) / length : 0.0;
            svg += line(a.across + std::fabs(dx) * (aside > 0 ? 1 : -1),
                        a.up + std::fabs(dy) * (aside > 0 ? 1 : -1),
                        b.across + std::fabs(dx) * (aside > 0 ? 1 : -1),
                        b.up + std::fabs(dy) * (aside > 0 ? 1 : -1), style);
        }
        return svg;
    }

    /** Microphones behind one another stand in one line of text. */
    std::string microphone(std::int32_t c) const {
        const Point p = onPaper(array_.microphone[c]);
        std::string numbers;
        for (std::int32_t other = 0; other < array_.channels; ++other) {
            const Point q = onPaper(array_.microphone[other]);
            if (std::hypot(q.across - p.across, q.up - p.up) > 4.0) continue;
            if (other < c && numbers.empty()) return "";
            numbers += (numbers.empty() ? "" : ",") + std::to_string(other);
        }
        const double half = 5.0 + 3.0 * static_cast<double>(numbers.size());
        return box(p.across - half, p.up - 8.0, 2 * half, 16.0, " rx=\"8\" class=\"mic\"") +
               label(p.across, p.up + 3.5, numbers, "number");
    }

    std::string ruler() const {
        double metres = std::pow(10.0, std::floor(std::log10(120.0 / scale_)));
        if (metres * 5.0 * scale_ <= 120.0) {
            metres *= 5.0;
        } else if (metres * 2.0 * scale_ <= 120.0) {
            metres *= 2.0;
        }
        const double y = top_ + PanelHeight - 10.0, right = left_ + PanelWidth - 10.0;
        const std::string text = metres < 0.995
                                     ? fixed(metres * 100.0, metres < 0.01 ? 1 : 0) + " cm"
                                     : fixed(metres, 0) + " m";
        return "  <line" + at("x1", right - metres * scale_) + at("y1", y) + at("x2", right) +
               at("y2", y) + " stroke=\"#888\" stroke-width=\"3\"/>\n" +
               label(right - metres * scale_ - 6.0, y + 4.0, text, "small end") +
               label(left_ + 8.0, y + 4.0,
                     isFromAbove_ ? "y to the right, x down" : "y to the right, z up", "small");
    }

    const VoxlocArray& array_;
    double left_, top_;
    bool isFromAbove_;
    Point least_{1e9, 1e9}, most_{-1e9, -1e9};
    double scale_ = 1.0;  // units of the drawing a metre
};

/** From fine (dark blue) to coarse (yellow), told apart by brightness alone. */
std::string colourOf(double share) {
    constexpr std::array<std::array<double, 3>, 5> Stops{
        {{68, 1, 84}, {59, 82, 139}, {33, 145, 140}, {94, 201, 98}, {253, 231, 37}}};
    const double place = std::clamp(share, 0.0, 1.0) * (Stops.size() - 1);
    const auto below = std::min(static_cast<std::size_t>(place), Stops.size() - 2);
    const double rest = place - static_cast<double>(below);
    std::string colour = "#";
    for (std::size_t i = 0; i < 3; ++i) {
        constexpr const char* Digits = "0123456789abcdef";
        const double value = Stops[below][i] * (1.0 - rest) + Stops[below + 1][i] * rest;
        const int whole = static_cast<int>(std::lround(value));
        colour += {Digits[whole / 16], Digits[whole % 16]};
    }
    return colour;
}

/** Degrees on a scale from a tenth to ten, by their logarithm. */
double shareOf(double degrees) {
    return (std::log10(std::min(degrees, 1e3)) + 1.0) / 2.0;
}

std::string legend(double left, double top) {
    std::string svg;
    constexpr int Steps = 44;
    for (int i = 0; i < Steps; ++i) {
        svg += box(left + i * 5.0, top, 5.2, 10.0,
                   " fill=\"" + colourOf(static_cast<double>(i) / (Steps - 1)) + "\"");
    }
    constexpr std::array<double, 5> Marks{0.1, 0.3, 1.0, 3.0, 10.0};
    for (const double mark : Marks) {
        svg += label(left + shareOf(mark) * Steps * 5.0, top + 24.0,
                     fixed(mark, mark < 1.0 ? 1 : 0), "small middle");
    }
    return svg + label(left + Steps * 5.0 + 14.0, top + 10.0, "degrees", "small");
}

/** One of the two angles' resolution over the whole grid. */
std::string drawMap(const Resolution& resolution, bool isElevation, double left, double top) {
    const double width = View::PanelWidth - 40.0, height = 170.0;
    const std::vector<double> azimuths = resolution.azimuths(MapColumns);
    const std::vector<double> elevations = resolution.elevations(MapRows);
    std::string svg = label(left, top - 10.0,
                            isElevation ? "Elevation: degrees that can be told apart"
                                        : "Azimuth: degrees that can be told apart",
                            "title");
    const double w = width / MapColumns, h = height / MapRows;
    svg += "  <g shape-rendering=\"crispEdges\">\n";
    for (std::size_t a = 0; a < azimuths.size(); ++a) {
        for (std::size_t e = 0; e < elevations.size(); ++e) {
            const AngleResolution here = resolution.at(azimuths[a], elevations[e]);
            const double degrees = isElevation ? here.elevationOf() : here.azimuthOf();
            const std::string fill = std::isfinite(degrees) ? colourOf(shareOf(degrees)) : "#888";
            svg += box(left + 40.0 + static_cast<double>(a) * w,
                       top + height - static_cast<double>(e + 1) * h, w + 0.2, h + 0.2,
                       " fill=\"" + fill + "\"");
        }
    }
    svg += "  </g>\n";
    for (const std::size_t a : {std::size_t{0}, azimuths.size() / 2, azimuths.size() - 1}) {
        svg += label(left + 40.0 + (static_cast<double>(a) + 0.5) * w, top + height + 16.0,
                     fixed(azimuths[a], 1), "small middle");
    }
    for (const std::size_t e : {std::size_t{0}, elevations.size() / 2, elevations.size() - 1}) {
        svg += label(left + 34.0, top + height - (static_cast<double>(e) + 0.5) * h + 4.0,
                     fixed(elevations[e], 1), "small end");
    }
    return svg;
}

}  // namespace

std::string drawArray(const NamedArray& named) {
    const Resolution resolution(named.array);
    const double right = Width - View::PanelWidth - 20.0;
    std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 960 640\">\n";
    svg += "  <title>" + escaped(named.name) + "</title>\n" + std::string(Style);
    svg += box(0.0, 0.0, Width, Height, " class=\"bg\"");
    svg +=
        label(20.0, 30.0, named.name + ": " + std::to_string(named.array.channels) + " microphones",
              "title");
    svg += View(named.array, 20.0, 80.0, false).draw();
    svg += View(named.array, right, 80.0, true).draw();
    svg += line(20.0, 304.0, 50.0, 304.0, "azimuth") + label(58.0, 308.0, "azimuth pairs", "small");
    svg += line(160.0, 304.0, 190.0, 304.0, "elevation") +
           label(198.0, 308.0, "elevation pairs", "small");
    if (named.array.attenuateLoudspeaker != 0) {
        svg += "  <circle cx=\"330\" cy=\"304\" r=\"7\" class=\"loudspeaker\"/>\n" +
               label(345.0, 308.0, "loudspeaker", "small");
    }
    svg += drawMap(resolution, false, 20.0, 370.0);
    if (named.array.elevationPairs > 0) {
        svg += drawMap(resolution, true, right, 370.0);
    } else {
        svg += label(right, 360.0, "No elevation pairs: elevations mean nothing", "title");
    }
    svg +=
        label(20.0 + 40.0, 574.0, "Azimuth goes to the right, elevation up; in degrees", "small");
    return svg + legend(60.0, 594.0) + "</svg>\n";
}

std::string drawViews(const NamedArray& named) {
    constexpr double Above = 24.0;  // for the title
    std::string text;
    for (const bool isFromAbove : {false, true}) {
        text += "<svg" + at("width", View::PanelWidth) +
                at("height", View::PanelHeight + Above + 1.0) + " viewBox=\"-1 0 " +
                fixed(View::PanelWidth + 2.0, 0) + " " + fixed(View::PanelHeight + Above + 1.0, 0) +
                "\" role=\"img\">\n" + View(named.array, 0.0, Above, isFromAbove).draw() +
                "</svg>\n";
    }
    return text;
}
