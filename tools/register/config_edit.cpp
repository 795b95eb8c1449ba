#include "config_edit.h"

#include <nlohmann/json.hpp>

namespace reg {
namespace {

struct Member {
  std::string key;
  size_t begin = 0;  // of the key's quotation mark
  size_t value = 0;
  size_t end = 0;  // behind the value
};

// The library takes bytes of any coding. What counts here is where they stand.
std::string Plain(std::string text) {
  for (char &byte : text) {
    if (static_cast<unsigned char>(byte) >= 128) byte = '?';
  }
  return text;
}

// Walks over a text that is known to be JSON.
class Walker {
 public:
  explicit Walker(const std::string &text) : text_(text) {}

  std::vector<Member> Members() {
    std::vector<Member> members;
    at_ = text_.find('{') + 1;
    for (Skip(); text_[at_] != '}'; Skip()) {
      if (text_[at_] == ',') {
        ++at_;
        continue;
      }
      Member member;
      member.begin = at_;
      PassString();
      member.key = nlohmann::json::parse(text_.substr(member.begin, at_ - member.begin)).get<std::string>();
      Skip();
      ++at_;  // the colon
      Skip();
      member.value = at_;
      PassValue();
      member.end = at_;
      members.push_back(member);
    }
    return members;
  }

 private:
  void Skip() { at_ = text_.find_first_not_of(" \t\r\n", at_); }
  void PassString() {
    for (++at_; text_[at_] != '"'; ++at_) {
      if (text_[at_] == '\\') ++at_;
    }
    ++at_;
  }
  void PassValue() {
    int depth = 0;
    do {
      const char byte = text_[at_];
      if (byte == '"') {
        PassString();
        continue;
      }
      if (byte == '{' || byte == '[') ++depth;
      if (byte == '}' || byte == ']') --depth;
      if (byte == '{' || byte == '[' || byte == '}' || byte == ']' || byte == ',' || byte == ':') {
        ++at_;
      } else {
        at_ = text_.find_first_of(",:{}[]\" \t\r\n", at_);
      }
      if (depth > 0) Skip();
    } while (depth > 0);
  }

  const std::string &text_;
  size_t at_ = 0;
};

// Laid out as the last member is.
void Append(std::string *text, const Member *last, const Setting &setting) {
  if (last == nullptr) {
    text->insert(text->find('{') + 1, "\"" + setting.first + "\":" + setting.second);
    return;
  }
  const size_t before = text->find_last_not_of(" \t\r\n", last->begin - 1) + 1;
  const size_t colon = text->rfind(':', last->value);
  text->insert(last->end, "," + text->substr(before, last->begin - before) + "\"" + setting.first + "\"" +
                              text->substr(colon, last->value - colon) + setting.second);
}

}  // namespace

Setting TextSetting(const std::string &key, const std::string &text) {
  return {key, nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)};
}

Setting NumberSetting(const std::string &key, int value) {
  return {key, std::to_string(value)};
}

std::optional<std::string> SetMembers(const std::string &text, const std::vector<Setting> &settings) {
  const size_t begin = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
  if (!nlohmann::json::parse(Plain(text.substr(begin)), nullptr, false).is_object()) return std::nullopt;
  std::string edited = text;
  for (const Setting &setting : settings) {
    const std::string plain = Plain(edited);
    const std::vector<Member> members = Walker(plain).Members();
    // A key that is the beginning of a setting's name may count as that setting, and of two the last counts.
    const Member *found = nullptr;
    for (const Member &member : members) {
      if (setting.first.compare(0, member.key.size(), member.key) == 0) found = &member;
    }
    if (found != nullptr && found->key == setting.first) {
      edited.replace(found->value, found->end - found->value, setting.second);
    } else {
      Append(&edited, members.empty() ? nullptr : &members.back(), setting);
    }
  }
  return edited;
}

}  // namespace reg
