// config/lumoconfig.h: the settings of CONFIG.JSN and CONFIG. They change only when LUMOInit loads anew.
#pragma once

#include <cstdint>

#include "json/lumojson.h"

namespace lumo {

// Each field is named after its key. A text is null when its key is absent, a number 0. Texts live as long as
// the library, also those of an earlier load: the register may hold one.
struct SettingsRecord {
  const char *terminalId;
  const char *protocolVersion;
  const char *serverAddr;  // http://host:port/path
  const char *serverAltAddr;
  const char *retailNetworkName;
  const char *offlinePath;  // kept; nothing reads it, nor logPath and receiptPath
  const char *logPath;
  const char *receiptPath;
  int32_t timeout;             // seconds
  int32_t offlineMode;         // on when 1
  int32_t shiftMode;           // on when above 0
  int32_t localBonusOffline;   // percent
  int32_t globalBonusOffline;  // percent
  int32_t orgFeeOffline;       // percent
  int32_t logSize;             // lines
  const char *receiptHeader;
  uint32_t receiptHeaderLength;  // bytes
  const char *receiptFooter;
  uint32_t receiptFooterLength;  // bytes
  int32_t sslMode;
  const char *sslKey;
};

const SettingsRecord &Settings();

// CONFIG.JSN, moved to CONFIG after a good load, and CONFIG. Each returns 0, ERR_CONFIG_LOAD,
// ERR_JSON_SYNTAX, ERR_JSON_MEMORY or ERR_JSON_FILE_OPEN.
int LoadNewConfig();
int LoadConfig();
int InitConfig();
int ApplyConfigTree(const JsonNode *root);

// Stores a copy of `text` in a field of the settings and returns it; null for null. What the field held
// before is kept.
const char *SetSettingString(const char **field, const char *text);

int SaveConfig();        // 0 or ERR_CONFIG_OPEN
void ReleaseSettings();  // frees the texts of every load

}  // namespace lumo
