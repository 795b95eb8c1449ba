#include "facts.h"

#include <nlohmann/json.hpp>

namespace reg {
namespace {

using Json = nlohmann::ordered_json;

std::string Dump(const Json &json, int indent) {
  return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

Facts::Facts() : object_(std::make_unique<Json>(Json::object())) {}
Facts::~Facts() = default;
Facts::Facts(const Facts &other) : object_(std::make_unique<Json>(*other.object_)) {}
Facts::Facts(Facts &&other) noexcept = default;

Facts &Facts::Add(const char *name, std::string_view text) {
  (*object_)[name] = text;
  return *this;
}

Facts &Facts::Add(const char *name, const std::string &text) {
  return Add(name, std::string_view(text));
}

Facts &Facts::Add(const char *name, std::nullptr_t) {
  (*object_)[name] = nullptr;
  return *this;
}

Facts &Facts::Add(const char *name, const char *text) {
  return text == nullptr ? Add(name, nullptr) : Add(name, std::string_view(text));
}

Facts &Facts::Add(const char *name, const std::optional<std::string> &text) {
  return Add(name, text ? text->c_str() : nullptr);
}

Facts &Facts::Add(const char *name, bool value) {
  (*object_)[name] = value;
  return *this;
}

Facts &Facts::Add(const char *name, int64_t value) {
  (*object_)[name] = value;
  return *this;
}

Facts &Facts::Add(const char *name, uint64_t value) {
  (*object_)[name] = value;
  return *this;
}

Facts &Facts::Add(const char *name, const Facts &facts) {
  (*object_)[name] = *facts.object_;
  return *this;
}

Facts &Facts::Add(const char *name, const std::vector<Facts> &list) {
  Json &array = (*object_)[name] = Json::array();
  for (const Facts &facts : list) array.push_back(*facts.object_);
  return *this;
}

Facts &Facts::Add(const char *name, const std::vector<std::string> &list) {
  (*object_)[name] = list;
  return *this;
}

Facts &Facts::AddJson(const char *name, std::string_view json) {
  Json parsed = Json::parse(json, nullptr, false);
  if (parsed.is_discarded()) return Add(name, json);
  (*object_)[name] = std::move(parsed);
  return *this;
}

std::string Facts::Text() const {
  return Dump(*object_, -1);
}

std::string Facts::Text(int indent) const {
  return Dump(*object_, indent);
}

}  // namespace reg
