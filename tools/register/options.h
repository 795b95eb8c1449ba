// register/options.h: options that several commands have.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace CLI {  // NOLINT(readability-identifier-naming): its own name
class App;
class Option;
}  // namespace CLI

namespace reg {

struct CardOptions {
  std::string card;
  std::string cashier;
};

std::shared_ptr<CardOptions> AddCard(CLI::App *command);

// An amount as a cashier writes it, in hundredths.
std::shared_ptr<int32_t> AddAmount(CLI::App *command, const std::string &name, const std::string &help,
                                   bool required);

// What is typed goes to the server and into records, which are UTF-8: every command refuses other words.
void TakeOnlyText(CLI::App &app);

// For every command: a flag is there or not. "--spend=50" would spend what the server decides, not 50.
void TakeNoValuesForFlags(CLI::App &app);

// One that has to be there, and not to be empty.
CLI::Option *Needs(CLI::Option *option);

inline const char *OrNull(const std::optional<std::string> &text) {
  return text ? text->c_str() : nullptr;
}

}  // namespace reg
