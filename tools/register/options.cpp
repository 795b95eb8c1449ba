#include "options.h"

#include <CLI/CLI.hpp>

#include "amount.h"

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
        } catch (const std::invalid_argument &error) {
          throw CLI::ValidationError(name, error.what());
        }
      },
      help);
  option->type_name("AMOUNT");
  if (required) option->required();
  return amount;
}

}  // namespace reg
