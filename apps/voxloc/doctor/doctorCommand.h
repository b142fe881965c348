/** voxloc doctor. */
#ifndef VOXLOC_APP_DOCTOR_DOCTOR_COMMAND_H
#define VOXLOC_APP_DOCTOR_DOCTOR_COMMAND_H

#include <CLI/CLI.hpp>

void addDoctorCommand(CLI::App& program, int& status);

#endif
