// SPDX-License-Identifier: MIT

// Which files are searched, by their names.

#ifndef VEKGREP_NAME_RULES_H
#define VEKGREP_NAME_RULES_H

#include <string>
#include <vector>

#include "options.h"

namespace examples::vekgrep {

// Whether "*", "?", "[...]" and "\" of a glob make it stand for the whole of a name.
bool MatchesGlob(const std::string& glob, const std::string& name);

// The rules of --include and --exclude for a file that was named, by any of its name's ends that
// follow a "/", or found in a folder, by the last part of its name.
bool AllowsFile(const Options& options, const std::string& name, bool wasNamed);

// Those of --exclude-dir for a folder.
bool AllowsFolder(const Options& options, const std::string& name, bool wasNamed);

}  // namespace examples::vekgrep

#endif
