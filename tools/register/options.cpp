#include "options.h"

#include <CLI/CLI.hpp>

#include "amount.h"
#include "utf8.h"

namespace reg {

std::shared_ptr<CardOptions> AddCard(CLI::App *command) {
  auto options = std::make_shared<CardOptions>();
  command->add_option("-c,--card", options->card, "Card number");
  command->add_option("--cashier", options->cashier, "Cashier's number");
  return options;
}

std::shared_ptr<int32_t> AddAmount(CLI::App *command, const std::string &name, const std::string &help,
                                   bool required) {
  auto amount = std::make_shared<int32_t>(0);
  CLI::Option *option = command->add_option_function<std::string>(
      name,
      [amount, name](const std::string &text) {
        try {
          *amount = ParseAmount(text);
          if (*amount < 0) throw std::invalid_argument("an amount is never below 0: " + text);
        } catch (const std::invalid_argument &error) {
          throw CLI::ValidationError(name, error.what());
        }
      },
      help);
  option->type_name("AMOUNT");
  if (required) option->required();
  return amount;
}

void TakeOnlyText(CLI::App &app) {
  const CLI::Validator is_text(
      [](const std::string &text) {
        return std::string(Mended(text) == text ? "" : "it is not UTF-8: " + Mended(text));
      },
      "");
  for (CLI::Option *option : app.get_options()) {
    // A file may be called anything.
    const std::string name = option->get_name();
    const bool is_file = name == "--library" || (app.get_name() == "trace" && name == "file");
    if (!is_file) option->check(is_text);
  }
  for (CLI::App *command : app.get_subcommands([](CLI::App *) { return true; })) TakeOnlyText(*command);
}

void TakeNoValuesForFlags(CLI::App &app) {
  for (CLI::Option *option : app.get_options()) {
    if (option->get_items_expected_max() == 0) option->disable_flag_override();
  }
  for (CLI::App *command : app.get_subcommands([](CLI::App *) { return true; })) {
    TakeNoValuesForFlags(*command);
  }
}

CLI::Option *Needs(CLI::Option *option) {
  return option->required()->check(CLI::Validator(
      [](const std::string &text) { return std::string(text.empty() ? "it must not be empty" : ""); }, ""));
}

}  // namespace reg
