// The command line of a test program: any arguments, lines of the input, give the status and the
// report that the list of its tests promises, and leave nothing behind.

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "audio/audtest/audunittest_internal.h"
#include "audunittest/audunittest.h"
#include "fuzz.h"
#include "kit/capturedConsole.h"

namespace {

void pass() {
    audunittest_succeed_test("file", 1);
}
void fail() {
    audunittest_fail_equals_double("file", 2, 0.5, -1e300, "==");
}
void failAndForget() {
    audunittest_fail_equals("file", 3, "left", "right", "!=");
    audunittest_reset();
}
void runOthers() {
    const char* const arguments[] = {"inner", "--runall", "__one"};
    audunittest_commandline(3, arguments);
}

struct Test {
    audunittest_function function;
    const char* name;
    bool passes;
};
// In the order of their names.
const Test Tests[] = {
    {pass, "", true},          {failAndForget, "TEST__forgets", false}, {fail, "TEST__two", false},
    {pass, "TEST__two", true}, {runOthers, "test__nested", true},       {pass, "test__one", true},
};

std::string lowerCase(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

bool matches(const Test& test, const std::string& search) {
    return lowerCase(test.name).find(lowerCase(search)) != std::string::npos;
}

std::string listing(const std::string& search) {
    std::string lines;
    long count = 0;
    for (const Test& test : Tests) {
        if (!matches(test, search)) continue;
        lines += std::string(test.name) + "\n";
        ++count;
    }
    return lines + "Found " + std::to_string(count) + (count == 1 ? " test.\n" : " tests.\n");
}

/** Whether a run of what matches has failures. */
bool hasFailures(const std::string& search) {
    return std::any_of(std::begin(Tests), std::end(Tests),
                       [&](const Test& test) { return matches(test, search) && !test.passes; });
}

/** The first test of that name, or null. */
const Test* findTest(const std::string& name) {
    const Test* found = std::find_if(std::begin(Tests), std::end(Tests),
                                     [&](const Test& test) { return name == test.name; });
    return found == std::end(Tests) ? nullptr : found;
}

void checkRun(const std::string& name, unsigned int status, const std::string& report) {
    const Test* test = findTest(name);
    if (test == nullptr) {
        demand(status == 1 && report == "Could not find unit test '" + name + "'\n",
               "the refusal of a name");
        return;
    }
    demand(status == (test->passes ? 0 : 1), "the status of a run");
    const bool hasSuccess = report.find(" Success [") != std::string::npos;
    demand(hasSuccess == test->passes, "a run's report of success");
}

void check(const std::vector<std::string>& arguments, unsigned int status,
           const std::string& report) {
    const std::string usage = "Usage: " + (arguments.empty() ? "" : arguments[0]) +
                              " [--run name] | [--runall [search]] | [--list [search]] | "
                              "[--help]\n";
    const std::string option = arguments.size() > 1 ? arguments[1] : "--help";
    const bool hasText = arguments.size() > 2;
    const std::string text = hasText ? arguments[2] : "";
    if (option == "--help" || option == "-h") {
        demand(status == 0 && report == usage, "the usage");
    } else if (option == "--list" || option == "--listunittest") {
        demand(status == 0 && report == listing(text), "the listing");
    } else if (option == "--runall" || option == "--runallunittests") {
        const bool failures = hasFailures(text);
        demand(status == (failures ? 1 : 0), "the status of a run of all");
        const char* last = failures ? "Test failure: " : "Test success: ";
        const std::size_t at = report.rfind(last);
        demand(at != std::string::npos && report.find("\nRunning ", at) == std::string::npos,
               "the summary of a run of all stands at its end");
    } else if (option == "--run" || option == "--rununittest") {
        if (hasText) return checkRun(text, status, report);
        demand(status == 1 && report == "Missing test name\n", "a name is demanded");
    } else {
        demand(status == 1 && report == "Unknown argument '" + option + "'\n" + usage,
               "the refusal of an option");
    }
}

void registerOnce() {
    if (audunittest::tests != nullptr) return;
    const int order[] = {2, 5, 0, 3, 1, 4};
    for (const int i : order) audunittest_register_test(Tests[i].function, Tests[i].name);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    registerOnce();
    std::vector<std::string> arguments;  // none at all for no input
    for (std::size_t i = 0; i < size; ++i) {
        const char c = static_cast<char>(data[i]);
        if (i == 0 || c == '\n') arguments.emplace_back();
        if (c != '\n' && c != '\0') arguments.back() += c;
    }
    std::vector<const char*> pointers;
    for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
    pointers.push_back(nullptr);
    CapturedConsole console;
    const unsigned int status = audunittest_commandline_with_console(
        static_cast<int>(arguments.size()), pointers.data(), &console.operations);
    demand(current_console == nullptr, "the console is put back");
    demand(audunittest::current_context == nullptr, "no context stays");
    check(arguments, status, console.text);
    return 0;
}
