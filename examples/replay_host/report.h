/// @file
/// What the host prints.

#ifndef REPLAY_HOST_REPORT_H
#define REPLAY_HOST_REPORT_H

#include "replay.h"
#include "word_statistics.h"

#include <string>
#include <vector>

/// Returns lines that say what the real operations found.
[[nodiscard]] std::string formatStatistics(const FileTree& tree, const FileContents& contents,
                                           const WordRanking& ranking);

/// Returns lines that explain the table.
[[nodiscard]] std::string formatExplanation(const std::string& slowName,
                                            const std::string& unrecordedName);

#endif  // REPLAY_HOST_REPORT_H
