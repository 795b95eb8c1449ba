// foundation/file_names.h: what the library's files are called.
#pragma once

namespace lumo {

constexpr char kNewConfigFile[] = "CONFIG.JSN";
constexpr char kConfigFile[] = "CONFIG";
constexpr char kStateFile[] = "STATE";
constexpr char kLogFile[] = "LOG";
constexpr char kOfflineFile[] = "OFFLINE";
constexpr char kOfflineTmpFile[] = "OFFLINE_TMP";

// Beside a file, for as long as it is written anew.
constexpr char kNewSuffix[] = ".new";      // what is to become the file
constexpr char kOldSuffix[] = ".old";      // what a trim cuts
constexpr char kNewLogFile[] = "LOG.new";  // LOG.old and LOG joined, before it becomes LOG
constexpr char kOldLogFile[] = "LOG.old";

}  // namespace lumo
