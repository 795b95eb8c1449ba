// register/config_edit.h: single members of a JSON object's text, set while every other byte stays as it was.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace reg {

// A setting's key and its value as JSON.
using Setting = std::pair<std::string, std::string>;

Setting TextSetting(const std::string &key, const std::string &text);
Setting NumberSetting(const std::string &key, int value);

// The text with these members set, new ones at its end. Nothing when the text is no JSON object.
std::optional<std::string> SetMembers(const std::string &text, const std::vector<Setting> &settings);

}  // namespace reg
