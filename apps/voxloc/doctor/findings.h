/** What is found, with its figures and its sentence. */
#ifndef VOXLOC_APP_DOCTOR_FINDINGS_H
#define VOXLOC_APP_DOCTOR_FINDINGS_H

#include <vector>

#include "doctor/channelStatistics.h"
#include "doctor/diagnosis.h"
#include "doctor/duplicates.h"
#include "doctor/geometryFaults.h"

std::vector<int> listOf(ChannelSet set);

/** Levels in dB of full scale, of the channel and of the middle one. */
Finding deadFinding(int channel, double level, double others);
Finding noiseFinding(int channel, double floor, double others);

/** In dB, louder if positive. */
Finding levelFinding(int channel, double deviation);

Finding clippingFinding(int channel, const ChannelReport& report);

/** A share of full scale. */
Finding offsetFinding(int channel, double mean);

/** Of all channels that hum with these mains, and the strongest of them. */
Finding humFinding(const std::vector<int>& channels, const Hum& strongest);

/** The channel's correlation with the others by that of the others with each other. */
Finding strangerFinding(int channel, double fit);

Finding duplicateFinding(const Duplicate& duplicate);

/** With what it may be instead. */
Finding geometryFinding(const GeometryFault& fault);

/** In dB of full scale. */
Finding ultrasoundFinding(double level);

/** Of the frames with voice. */
Finding upsideDownFinding(double share);

#endif
