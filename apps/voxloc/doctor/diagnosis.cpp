#include "doctor/diagnosis.h"

#include <nlohmann/json.hpp>

#include "common/table.h"

const char* nameOf(Fault fault) {
    switch (fault) {
        case Fault::Dead:
            return "dead";
        case Fault::Quiet:
            return "quiet";
        case Fault::Loud:
            return "loud";
        case Fault::Clipping:
            return "clipping";
        case Fault::Offset:
            return "offset";
        case Fault::Hum:
            return "hum";
        case Fault::Duplicate:
            return "duplicate";
        case Fault::Swapped:
            return "swapped";
        case Fault::Inverted:
            return "inverted";
        case Fault::Late:
            return "late";
        case Fault::Drift:
            return "drift";
        case Fault::Noise:
            return "noise";
        case Fault::Ultrasound:
            return "ultrasound";
        case Fault::UpsideDown:
            return "upside_down";
    }
    return "";
}

const char* nameOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Sound:
            return "sound";
        case Verdict::Faults:
            return "faults";
        case Verdict::CannotTell:
            return "cannot tell";
    }
    return "";
}

std::string channelsText(const std::vector<int>& channels) {
    std::string text = channels.size() == 1 ? "channel " : "channels ";
    for (std::size_t i = 0; i < channels.size(); ++i) {
        if (i > 0) text += i + 1 == channels.size() ? " and " : ", ";
        text += std::to_string(channels[i]);
    }
    return text;
}

std::string diagnosisText(const std::string& input, const std::string& array,
                          const Diagnosis& diagnosis) {
    std::string text = input + ": " + nameOf(diagnosis.verdict) + " (array " + array + ", " +
                       fixed(diagnosis.speechSeconds, 1) + " s of speech in " +
                       fixed(diagnosis.seconds, 1) + " s)\n";
    for (const Finding& finding : diagnosis.findings) {
        text += std::string("  ") + nameOf(finding.fault) + ": " + finding.text + "\n";
    }
    for (const std::string& note : diagnosis.notes) text += "  note: " + note + "\n";
    return text;
}

std::string diagnosisJson(const std::string& input, const std::string& array,
                          const Diagnosis& diagnosis) {
    using Json = nlohmann::ordered_json;
    Json findings = Json::array();
    for (const Finding& finding : diagnosis.findings) {
        Json figures = Json::object();
        for (const auto& [name, value] : finding.figures) figures[name] = value;
        findings.push_back({{"fault", nameOf(finding.fault)},
                            {"channels", finding.channels},
                            {"instead", finding.instead},
                            {"figures", figures},
                            {"text", finding.text}});
    }
    const Json json = {{"file", input},
                       {"array", array},
                       {"verdict", nameOf(diagnosis.verdict)},
                       {"seconds", diagnosis.seconds},
                       {"speech_seconds", diagnosis.speechSeconds},
                       {"response", diagnosis.response},
                       {"levels_db", diagnosis.levels},
                       {"findings", findings},
                       {"notes", diagnosis.notes}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}
