// The commands, each in a file of its own: what they take, and how they end.
#pragma once

#include "cli/Messages.h"
#include "cli/Options.h"
#include "cli/RenderJob.h"

#include <string>
#include <vector>

namespace quillomat {

/// A recording to draw again.
struct ReplayJob {
    std::string recording; // a file that `render --dump` wrote; "-" is standard input
    std::string output;    // a file, "-" for standard output
    bool best = false;
};

ExitStatus runList(const GlobalOptions& options);
ExitStatus runShow(const GlobalOptions& options, const std::string& mockup);
ExitStatus runRender(const GlobalOptions& options, RenderJob job);
ExitStatus runReplay(const GlobalOptions& options, const ReplayJob& job);
ExitStatus runImport(const GlobalOptions& options, const std::vector<std::string>& files, bool replace);
ExitStatus runDelete(const GlobalOptions& options, const std::string& mockup);
ExitStatus runUpdate(const GlobalOptions& options, bool checkOnly);
ExitStatus runPublish(const GlobalOptions& options, const std::string& directory, const std::string& row);

} // namespace quillomat
