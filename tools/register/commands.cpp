#include "commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <string_view>

namespace reg {
namespace {

constexpr size_t kLongestTag = 200;

constexpr char kStatuses[] = R"(Exit status:
  0    done
  1    refused by the library or the server; queue: something waits; doctor: not fit to sell
  2    the command line is not understood, or asks for what cannot work
  3    a file cannot be read, written or loaded
  4    the library ended the process
  130  interrupted (143: terminated), after what ran was finished)";

// "spend was given a disallowed flag override"
std::string InPlainWords(const std::string &text) {
  constexpr std::string_view kEnd = " was given a disallowed flag override";
  const size_t length = text.size() - std::min(text.size(), kEnd.size());
  return text.substr(length) == kEnd ? "--" + text.substr(0, length) + " takes no value" : text;
}

void ShowVersion(Till &till) {
  std::string library;
  try {
    library = till.Loaded().lumoVersion();
  } catch (const Failure &) {
    library.clear();  // the register's own is known all the same
  }
  std::error_code error;
  const char *missing = std::filesystem::exists(till.libraryFile, error) ? "cannot be loaded" : "not found";
  Facts facts;
  facts.Add("register", LUMO_VERSION).Add("library", library.empty() ? nullptr : library.c_str());
  till.Show(facts, [&] {
    std::cout << "register " LUMO_VERSION "\nlibrary " << (library.empty() ? missing : library) << '\n';
  });
}

}  // namespace

void AddGeneralOptions(CLI::App &app, Till &till) {
  app.add_option("-l,--library", till.libraryFile, "The library file; its folder holds all of lumo's files")
      ->capture_default_str()
      ->check(CLI::Validator(
          [](const std::string &name) {
            std::error_code error;
            return std::string(name.empty() ? "it must not be empty"
                               : std::filesystem::is_directory(std::filesystem::u8path(name), error)
                                   ? "that is a folder: name the library file in it"
                                   : "");
          },
          ""));
  app.add_option("--tag", till.tag, "Trace into TRACE_<tag>.TXT")
      ->check(CLI::Validator(
          [](const std::string &tag) {
            return std::string(tag.find_first_of("/\\") != std::string::npos ? "it names no folder: " + tag
                               : tag.size() > kLongestTag ? "longer than a file's name may be"
                                                          : "");
          },
          ""));
  app.add_flag("--json", till.asJson, "Facts as one line of JSON on standard output");
  app.add_flag("--progress", till.showsProgress,
               "On standard error, how far a long call has come, where no terminal is too");
  app.add_flag_callback(
      "--version",
      [&till] {
        ShowVersion(till);
        throw CLI::Success();
      },
      "Versions of the register and of the library file");
  app.footer(kStatuses);
}

void AddCommands(CLI::App &app, Till &till) {
  // "/SHOP/BILL.JSN" is a path on Windows too.
  app.allow_windows_style_options(false);
  AddConfigureCommand(app, till);
  AddStatusCommand(app, till);
  AddDoctorCommand(app, till);
  AddShiftCommands(app, till);
  AddCardCommands(app, till);
  AddPaymentCommands(app, till);
  AddQueueCommand(app, till);
  AddJournalCommand(app, till);
  AddReportCommand(app, till);
  AddTraceCommand(app, till);
  AddMessageCommand(app, till);
  app.require_subcommand(1);
}

int Parse(CLI::App &app, Till &till, const std::function<void()> &parse) {
  const auto complain = [&till](Status status, const std::string &text) {
    std::cerr << "register: " << text << '\n';
    if (till.asJson) std::cout << Facts().Add("error", text).Text() << '\n';
    till.status = status;
  };
  const auto misunderstood = [&app, &till](const CLI::ParseError &error) {
    till.status = app.exit(error) == 0 ? kDone : kBadWords;
    // A line that is not understood may have no effect yet, so the flag is asked for itself.
    const CLI::Option *json = app.get_option_no_throw("--json");
    if (till.status != kDone && (till.asJson || (json != nullptr && json->count() > 0))) {
      std::cout << Facts().Add("error", error.what()).Text() << '\n';
    }
  };
  try {
    till.status = kDone;
    parse();
  } catch (const Refused &refused) {
    std::cerr << "error " << refused.code << ": " << refused.message << '\n';
    if (till.asJson) {
      std::cout << Facts(refused.facts).Add("error", refused.message).Add("code", refused.code).Text()
                << '\n';
    }
    till.status = kRefused;
  } catch (const CLI::RequiredError &error) {
    // Of a word that is no command, CLI11 says only that there is none.
    const std::vector<std::string> words = app.remaining();
    if (app.get_subcommands().empty() && !words.empty() && words[0][0] != '-') {
      misunderstood({"there is no command " + words[0], CLI::ExitCodes::RequiredError});
    } else {
      misunderstood(error);
    }
  } catch (const CLI::ArgumentMismatch &error) {
    misunderstood({InPlainWords(error.what()), CLI::ExitCodes::ArgumentMismatch});
  } catch (const CLI::ParseError &error) {
    misunderstood(error);
  } catch (const Failure &failure) {
    complain(failure.status, failure.what());
  } catch (const std::filesystem::filesystem_error &error) {
    complain(kNoFile, error.path1().u8string() + ": " + error.code().message());
  } catch (const std::bad_alloc &) {
    complain(kNoFile, "there is no memory left");
  } catch (const std::exception &error) {
    complain(kNoFile, std::string("it cannot go on: ") + error.what());
  }
  const bool is_out = std::cout.flush().good();
  if (!is_out && till.status < kNoFile) complain(kNoFile, "standard output cannot be written");
  till.Rest();
  return till.status;
}

}  // namespace reg
