/** Faults that the array's geometry shows in segments of speech. */
#ifndef VOXLOC_APP_DOCTOR_GEOMETRY_FAULTS_H
#define VOXLOC_APP_DOCTOR_GEOMETRY_FAULTS_H

#include <utility>
#include <vector>

#include "doctor/steering.h"

enum class GeometryKind { Inverted, Swapped, Late, Drift };

/** Channels, and lags that they are late. */
struct LikeFault {
    ChannelSet channels = 0;
    double offset = 0.0;
};

/** A fault that makes the array's geometry fit where it did not. */
struct GeometryFault {
    GeometryKind kind = GeometryKind::Inverted;
    ChannelSet channels = 0;
    double offset = 0.0;  // lags that the channels are late
    double slope = 0.0;   // lags a second by which that grows
    double gain = 0.0;    // of the pairs concerned, as a share of the response with the fault
    double fit = 1.0;     // of one channel's pairs with the fault: their response by the others'
    double sum = 0.0;     // of the best responses with the fault
    std::vector<LikeFault> instead = {};  // of the same kind, that fit nearly as well
};

struct GeometryFindings {
    std::vector<GeometryFault> faults;
    /** Channels that the others' sound does not reach at all. */
    ChannelSet strangers = 0;
    std::vector<double> fits;  // of each channel: its correlation by that of the others
    /** Pairs that sound reached at the same time from every place. */
    std::vector<std::pair<int, int>> untold;
    /** Mean correlation of a pair at the best places, faults accounted for: 1 without any room. */
    double response = 0.0;
};

/** Segments are changed as faults are accounted for. */
GeometryFindings findGeometryFaults(const Places& places, std::vector<SegmentTables>& segments,
                                    ChannelSet used);

#endif
