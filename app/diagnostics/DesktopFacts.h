// The report's sections on the program and what it found around it. Threads: the main thread; nothing is asked.
#pragma once

#include "app/diagnostics/DiagnosticsReport.h"

namespace quenby {

struct PlatformServices;

// The version is that of the program, with its build.
DiagnosticsSection programSection(const QString& version);
DiagnosticsSection desktopSection();
DiagnosticsSection statusItemSection(const PlatformServices& platform);
// Every service of the platform: whether it works, or its own words on why not.
DiagnosticsSection servicesSection(const PlatformServices& platform);
// The parts of the program that are loaded when they are needed.
DiagnosticsSection modulesSection();

} // namespace quenby
