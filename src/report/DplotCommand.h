#pragma once

#include <string>

namespace zav {

// The command string handed to the DPlot plotting library with a plot. Versions from 2.1.2.8
// on can name the plot's document: the start-up folder (with its trailing separator) followed
// by ObsTime and ".grf"; older ones only get the plot restored. Only a platform that has the
// library uses it.
std::string DplotCommand(const std::string& dplotVer, const std::string& currentDir,
                         const std::string& obsTime);

} // namespace zav
