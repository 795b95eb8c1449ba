// foundation/file_names.h: what the library's files are called.
#pragma once

namespace lumo {

constexpr char kNewConfigFile[] = "CONFIG.JSN";
constexpr char kConfigFile[] = "CONFIG";
constexpr char kStateFile[] = "STATE";
constexpr char kLogFile[] = "LOG";
constexpr char kOfflineFile[] = "OFFLINE";
constexpr char kOfflineTmpFile[] = "OFFLINE_TMP";

}  // namespace lumo
