/**
 * Makes calls to the system fail. The linker hands every call of the program's own objects to the
 * functions listed in injection.cpp to that file, which counts them all in one row, and lets a
 * chosen one fail in one of the ways in which calls of its kind can.
 */
#ifndef VERIFY_UNIT_FAULTS_INJECTION_H
#define VERIFY_UNIT_FAULTS_INJECTION_H

#include <functional>
#include <string>

namespace faults {

/** Which call fails, from 1 on, in which of its ways, from 0 on, and whether all later ones do. */
struct Fault {
    int call = 0;
    int way = 0;
    bool lasts = false;
};

/** How a process with a fault has ended. */
struct Outcome {
    Fault fault;
    int ways = 0;            // in which the call can fail; 0: there was no such call
    bool hasFailed = false;  // and it has
    std::string call;        // the function
    int error = 0;           // that it failed with; negative: it did less than it should
    int status = 0;          // the exit status; minus the signal that ended it otherwise
    std::string text;        // its standard error

    std::string describe() const;
};

/**
 * Runs the scenario in a process of its own, which ends with 0 when the scenario returns true and
 * with 1 when it returns false.
 */
Outcome runWith(const Fault& fault, const std::function<bool()>& scenario);

/** Where a scenario runs: in a process of its own for each fault, if a fault may end it. */
enum class Where { InAProcessOfItsOwn, Here };

/**
 * Runs the scenario with each of its calls failing in turn, in each way, once and for good; at last
 * without any. `check` is told how each ended.
 */
void runWithEach(const std::function<bool()>& scenario,
                 const std::function<void(const Outcome&)>& check,
                 Where where = Where::InAProcessOfItsOwn);

/** Faults that have struck in this program so far. */
int count();

/** Adds one that did not come from here. */
void countOne();

/** In a scenario: what happens in the world while ppoll waits. */
void whileWaiting(const std::function<void()>& happens);

/** In a scenario: from here on calls are counted, or not. It ends with not. */
void watch(bool isWatched);

/** Blocks that the scenario has allocated and not freed, while watched. */
int openBlocks();

}  // namespace faults

#endif
