/** What the doctor says of an input. */
#ifndef VOXLOC_APP_DOCTOR_DIAGNOSIS_H
#define VOXLOC_APP_DOCTOR_DIAGNOSIS_H

#include <string>
#include <utility>
#include <vector>

enum class Fault {
    Dead,
    Quiet,
    Loud,
    Clipping,
    Offset,
    Hum,
    Duplicate,
    Swapped,
    Inverted,
    Late,
    Drift,
    Noise,
    Ultrasound,
    UpsideDown
};

/** As records name it: "dead", "upside_down". */
const char* nameOf(Fault fault);

struct Finding {
    Fault fault;
    std::vector<int> channels;                            // from 0 on; none: the whole array
    std::vector<std::pair<std::string, double>> figures;  // with the unit in the name
    std::string text;                                     // a sentence without its full stop
    std::vector<std::vector<int>> instead = {};           // channels that may be it as well
};

enum class Verdict { Sound, Faults, CannotTell };

const char* nameOf(Verdict verdict);

struct Diagnosis {
    Verdict verdict = Verdict::CannotTell;
    std::vector<Finding> findings;
    std::vector<std::string> notes;  // what could not be told, and why
    double seconds = 0.0;            // of input
    double speechSeconds = 0.0;      // of it, what the geometry was judged by
    double response = 0.0;           // mean correlation of two microphones, 1 without any room
    std::vector<double> levels;      // dB of full scale from 400 Hz to 8 kHz, of each channel
};

/** "channels 1, 4 and 5". */
std::string channelsText(const std::vector<int>& channels);

/** Lines for people, or one line of JSON. */
std::string diagnosisText(const std::string& input, const std::string& array,
                          const Diagnosis& diagnosis);
std::string diagnosisJson(const std::string& input, const std::string& array,
                          const Diagnosis& diagnosis);

#endif
