/** Channels that carry one signal. */
#ifndef VOXLOC_APP_DOCTOR_DUPLICATES_H
#define VOXLOC_APP_DOCTOR_DUPLICATES_H

#include <vector>

#include "doctor/steering.h"

struct Duplicate {
    int copy = 0, original = 0;
    double likeness = 0.0;  // 1: the same phases everywhere
    bool isCertain = true;  // false: sound may have come to both at the same time
};

/** Of several copies of one signal each is found once. */
std::vector<Duplicate> findDuplicates(const Places& places,
                                      const std::vector<SegmentTables>& segments, ChannelSet used);

#endif
