// Where a desktop or a Linux phone keeps the user's documents and pictures, and where the application's resources lie.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace quillomat {

/// Reads one environment variable; nothing when it is not set.
using Environment = std::function<std::optional<std::string>(const std::string& name)>;
[[nodiscard]] Environment processEnvironment();

/// `$XDG_DATA_HOME/quillomat`, else `~/.local/share/quillomat`. Relative values of the variable do not count
///. Empty when there is no home either.
[[nodiscard]] std::string defaultDocumentsDirectory(const Environment& environment);

/// `$XDG_PICTURES_DIR`, else the entry of that name in the user-dirs.dirs file of the configuration folder, else
/// `~/Pictures`. Empty when there is no home.
[[nodiscard]] std::string picturesDirectory(const Environment& environment);

/// The resources folder that belongs to the program at `programPath`: the installed one beside it
/// (`../share/quillomat`), else the source tree's for a program in a build folder (`build/<preset>/bin`), else empty.
[[nodiscard]] std::string resourcesDirectory(const std::string& programPath);
/// The path of the running program.
[[nodiscard]] std::string runningProgram();

} // namespace quillomat
