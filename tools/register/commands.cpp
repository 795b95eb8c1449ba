#include "commands.h"

#include <asio.hpp>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "amount.h"
#include "progress.h"
#include "shop_files.h"
#include "slip.h"

namespace reg {
namespace {

// A call of the library that was refused; the register says why and goes on.
struct Refused {
  int code;
};

const char *OrDash(const char *text) {
  return text != nullptr && *text != '\0' ? text : "-";
}
const char *OrDash(const std::string &text) {
  return OrDash(text.c_str());
}
const char *OrNull(const std::optional<std::string> &text) {
  return text ? text->c_str() : nullptr;
}

Library &Loaded(Till &till) {
  if (!till.library) till.library = std::make_unique<Library>(till.libraryFile);
  return *till.library;
}

void Check(const Library &library, int code) {
  if (code >= 0) return;
  std::cerr << "error " << code << ": " << library.GetErrorMessage(code) << '\n';
  throw Refused{code};
}

Library &Started(Till &till) {
  Library &library = Loaded(till);
  if (!till.started) {
    Check(library, till.tag.empty() ? library.LUMOInit() : library.LUMOInitExt(till.tag.c_str()));
    till.started = true;
  }
  return library;
}

std::filesystem::path Folder(const Till &till) {
  return std::filesystem::absolute(till.libraryFile).parent_path();
}

std::filesystem::path TraceFile(const Till &till) {
  return Folder(till) / (till.tag.empty() ? "TRACE.TXT" : "TRACE_" + till.tag + ".TXT");
}

// One transaction from its creation to its close, whatever happens in between.
class OneTransaction {
 public:
  OneTransaction(Library &library, const std::string &card, const std::string &cashier) : library_(library) {
    Check(library, library.CreateTransaction(card.c_str(), cashier.c_str()));
  }
  ~OneTransaction() { library_.CloseTransaction(); }
  OneTransaction(const OneTransaction &) = delete;
  OneTransaction &operator=(const OneTransaction &) = delete;

 private:
  Library &library_;
};

void ShowAnswer(const Library &library) {
  const std::string state = library.getResponseState();
  const std::string code = library.getResponseStateCode();
  std::cout << "  server " << OrDash(state) << " / " << OrDash(code) << ", RRN " << OrDash(library.getRRN())
            << '\n';
}

void ShowSlip(const Library &library) {
  const char *const pieces[] = {library.getReceiptHeaderPtr(), library.getReceiptBodyPtr(),
                                library.getReceiptFooterPtr()};
  if (pieces[1] == nullptr || *pieces[1] == '\0') return;
  std::string text;
  for (const char *piece : pieces) {
    if (piece == nullptr) continue;
    text += piece;
    if (!text.empty() && text.back() != '\n') text += '\n';  // the deposit's last line has no end of its own
  }
  DrawSlip(std::cout, text);
}

struct CardOptions {
  std::string card;
  std::string cashier;
};

// Runs one operation on a card and shows what a cashier would see.
void Operate(Till &till, const CardOptions &options, const std::function<int(Library &)> &operation,
             const std::function<void(Library &)> &after = nullptr) {
  const std::string &card = options.card.empty() ? till.card : options.card;
  if (card.empty()) throw CLI::ValidationError("--card", "which card?");
  Library &library = Started(till);
  const OneTransaction transaction(library, card, options.cashier.empty() ? till.cashier : options.cashier);
  const int code = operation(library);
  if (code < 0 && library.getResponseState()[0] != '\0') ShowAnswer(library);
  Check(library, code);
  ShowSlip(library);
  ShowAnswer(library);
  if (after) after(library);
}

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

void ShowBonuses(Library &library) {
  std::cout << "  earned " << ShowAmount(library.GetEarnBonusAmount()) << ", spent "
            << ShowAmount(library.GetSpendBonusAmount()) << ", discount "
            << ShowAmount(library.GetDiscountAmount()) << '\n';
}

// ---- shop: settings, shift, state ----

void AddConfigure(CLI::App &app, Till &till) {
  struct Options {
    std::string server, alternate, terminal = "00001", protocol = "1.0", network = "Сеть", header = "Магазин",
                                   footer = "Спасибо!";
    int timeout = 10, offline = 0, shift = 0, local = 0, global = 0, fee = 0, log_size = 3000;
  };
  auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("configure", "Write a CONFIG.JSN beside the library file");
  command->add_option("--server", options->server, "Server address, http://a.b.c.d:port/path")->required();
  command->add_option("--alternate", options->alternate, "Alternate server address");
  command->add_option("--terminal", options->terminal, "Terminal id")->capture_default_str();
  command->add_option("--protocol", options->protocol, "Protocol version")->capture_default_str();
  command->add_option("--network", options->network, "Name of the retail network")->capture_default_str();
  command->add_option("--header", options->header, "First line of each slip")->capture_default_str();
  command->add_option("--footer", options->footer, "Last line of each slip")->capture_default_str();
  command->add_option("--timeout", options->timeout, "Seconds to wait for the server")->capture_default_str();
  command->add_option("--offline", options->offline, "1: sell without the server too")->capture_default_str();
  command->add_option("--shift-mode", options->shift, "1: no operation without an open shift")
      ->capture_default_str();
  command->add_option("--local-bonus", options->local, "Percent of local bonus offline")
      ->capture_default_str();
  command->add_option("--global-bonus", options->global, "Percent of global bonus offline")
      ->capture_default_str();
  command->add_option("--fee", options->fee, "Percent of the organiser's fee offline")->capture_default_str();
  command->add_option("--log-size", options->log_size, "Lines the log may hold")->capture_default_str();
  command->callback([options, &till] {
    nlohmann::ordered_json json = {{"terminalId", options->terminal},
                                   {"protocolVersion", options->protocol},
                                   {"serverAddr", options->server}};
    if (!options->alternate.empty()) json["serverAltAddr"] = options->alternate;
    json["retailNetworkName"] = options->network;
    json["timeout"] = options->timeout;
    json["offlineMode"] = options->offline;
    json["shiftMode"] = options->shift;
    json["localBonusOffline"] = options->local;
    json["globalBonusOffline"] = options->global;
    json["orgFeeOffline"] = options->fee;
    json["logSize"] = options->log_size;
    json["receiptHeader"] = options->header;
    json["receiptFooter"] = options->footer;
    // The library never replaces a CONFIG in force by a delivered one, so an engineer who configures anew
    // removes it.
    std::filesystem::remove(Folder(till) / "CONFIG");
    const std::filesystem::path file = Folder(till) / "CONFIG.JSN";
    std::ofstream stream(file, std::ios::binary);
    stream << json.dump(2) << '\n';
    if (!stream.flush()) throw CLI::RuntimeError("cannot write " + file.string(), 1);
    std::cout << "  written: " << file.string() << '\n';
    till.started = false;
  });
}

bool Answers(const std::string &host, int port) {
  asio::io_context context;
  asio::ip::tcp::socket socket(context);
  asio::error_code error;
  const auto address = asio::ip::make_address(host, error);
  if (error || port <= 0 || port > 65535) return false;
  bool connected = false;
  socket.async_connect({address, static_cast<uint16_t>(port)},
                       [&](const asio::error_code &result) { connected = !result; });
  context.run_for(std::chrono::seconds(3));
  return connected;
}

void ShowServer(const char *label, const char *host, int port) {
  std::cout << label;
  if (host == nullptr || *host == '\0') {
    std::cout << "no usable address\n";
    return;
  }
  std::cout << host << ':' << port << (Answers(host, port) ? "  answers" : "  DOES NOT ANSWER") << '\n';
}

void ShowStatus(Till &till) {
  Library &library = Started(till);
  const std::filesystem::path folder = library.folder();
  const ShiftState state = ReadState(folder / "STATE");
  std::cout << "  library     " << library.file().string() << '\n'
            << "  terminal    " << OrDash(library.getTerminalId()) << '\n';
  ShowServer("  server      ", library.getPingAddress(), library.getPingPort());
  ShowServer("  alternate   ", library.getPingAltAddress(), library.getPingAltPort());
  std::cout << "  shift       ";
  if (state.shiftState != 0) {
    std::cout << "open since " << OrDash(state.openDate) << ", id " << OrDash(state.shiftId) << '\n';
  } else if (!state.closeDate.empty()) {
    std::cout << "closed at " << state.closeDate << '\n';
  } else {
    std::cout << "closed\n";
  }
  std::cout << "  last RRN    " << OrDash(state.requestId) << '\n'
            << "  mode        " << (library.getOfflineState() != 0 ? "OFFLINE" : "online") << '\n'
            << "  log         " << CountRecords(folder / "LOG") << " records\n"
            << "  waiting     " << CountRecords(folder / "OFFLINE") << " offline records\n"
            << "  update      "
            << (library.getNeedUpdate() != 0 ? "announced by the server" : "none announced") << '\n';
}

void AddShopCommands(CLI::App &app, Till &till) {
  AddConfigure(app, till);
  app.add_subcommand("status", "Settings, connection, shift, journals: is this terminal fit to sell?")
      ->callback([&till] { ShowStatus(till); });

  CLI::App *shift = app.add_subcommand("shift", "Open or close the cashier's shift");
  shift->require_subcommand(1);
  auto id = std::make_shared<std::optional<std::string>>();
  CLI::App *open = shift->add_subcommand("open", "Open a shift");
  open->add_option("id", *id, "The shift's number; without one the library makes its own");
  open->callback([id, &till] {
    Library &library = Started(till);
    Check(library, library.OpenShift(OrNull(*id)));
    std::cout << "  shift open\n";
  });
  shift->add_subcommand("close", "Close the shift")->callback([&till] {
    Library &library = Started(till);
    Check(library, library.CloseShift());
    std::cout << "  shift closed\n";
  });

  CLI::App *offline = app.add_subcommand("offline-state", "Show the offline flag, or set it to 0 or 1");
  auto value = std::make_shared<std::optional<int>>();
  offline->add_option("value", *value, "0 or 1");
  offline->callback([value, &till] {
    Library &library = Started(till);
    if (*value) Check(library, library.setOfflineState(**value));
    std::cout << "  offline state " << library.getOfflineState() << '\n';
  });

  CLI::App *journal = app.add_subcommand("journal", "List the records of the log or of the offline queue");
  auto waiting = std::make_shared<bool>(false);
  journal->add_flag("--offline", *waiting, "The offline queue");
  journal->callback([waiting, &till] {
    size_t number = 0;
    for (const Record &record : ReadJournal(Folder(till) / (*waiting ? "OFFLINE" : "LOG"))) {
      std::cout << "  " << ++number << "  ";
      if (!record.readable) {
        std::cout << "UNREADABLE\n";
        continue;
      }
      std::cout << record.date << "  " << OrDash(record.rrn) << "  " << record.type << "  card "
                << OrDash(record.card) << (record.offline ? "  offline  " : "  ") << record.detail << '\n';
    }
    if (number == 0) std::cout << "  no records\n";
  });

  CLI::App *trace = app.add_subcommand("trace", "Show the last lines of the trace");
  auto lines = std::make_shared<size_t>(20);
  trace->add_option("-n,--lines", *lines, "How many")->capture_default_str();
  trace->callback([lines, &till] {
    const std::string text = ReadWhole(TraceFile(till));
    size_t at = text.size();
    for (size_t left = *lines + 1; left > 0 && at > 0 && at != std::string::npos; --left)
      at = text.rfind('\n', at - 1);
    std::cout << (at == std::string::npos || at == 0 ? text : text.substr(at + 1));
  });

  CLI::App *message = app.add_subcommand("message", "The cashier's text for a result code");
  auto code = std::make_shared<int>(0);
  message->add_option("code", *code, "Result code")->required();
  message->callback([code, &till] { std::cout << "  " << Loaded(till).GetErrorMessage(*code) << '\n'; });
}

// ---- card operations ----

void AddCardCommands(CLI::App &app, Till &till) {
  {
    CLI::App *command = app.add_subcommand("activate", "Activate a card: simple, gift or friend");
    auto card = AddCard(command);
    auto type = std::make_shared<std::string>("simple");
    command->add_option("type", *type, "simple, gift or friend")
        ->check(CLI::IsMember({"simple", "gift", "friend"}))
        ->capture_default_str();
    auto amount = AddAmount(command, "--amount", "Sum of the activation", false);
    auto account = std::make_shared<std::string>("GLOBAL");
    command->add_option("--account", *account, "GLOBAL, LOCAL or DISCOUNT (gift cards)")
        ->capture_default_str();
    auto referrer = std::make_shared<std::optional<std::string>>();
    command->add_option("--referrer", *referrer, "Card of the friend who brought the customer");
    auto bill = std::make_shared<std::optional<std::string>>();
    command->add_option("--bill", *bill, "Bill file, relative to the library's folder");
    command->callback([=, &till] {
      const char *name = *type == "gift"     ? "GIFT_CARD"
                         : *type == "friend" ? "REFER_A_FRIEND"
                                             : "SIMPLE_ACTIVATION";
      Operate(
          till, *card,
          [&](Library &library) {
            return library.ActivationProc(name, OrNull(*bill), *amount, account->c_str(), OrNull(*referrer));
          },
          [](Library &library) {
            std::cout << "  credited " << ShowAmount(library.GetActivationAmount()) << '\n';
          });
    });
  }
  {
    CLI::App *command = app.add_subcommand("balance", "Ask for a card's balance");
    auto card = AddCard(command);
    command->callback([=, &till] {
      Operate(
          till, *card, [](Library &library) { return library.BalanceProc(); },
          [](Library &library) { std::cout << "  balance " << ShowAmount(library.GetBalance()) << '\n'; });
    });
  }
  {
    CLI::App *command = app.add_subcommand("deposit", "Put an amount on a card");
    auto card = AddCard(command);
    auto amount = AddAmount(command, "amount", "How much", true);
    command->callback(
        [=, &till] { Operate(till, *card, [&](Library &library) { return library.DepositProc(*amount); }); });
  }
  {
    CLI::App *command = app.add_subcommand("exchange", "Move a card's accounts to the card of a token");
    auto card = AddCard(command);
    auto token = std::make_shared<std::string>();
    command->add_option("token", *token, "The token")->required();
    command->callback([=, &till] {
      Operate(till, *card, [&](Library &library) { return library.ExchangeProc(token->c_str()); });
    });
  }
  {
    CLI::App *command = app.add_subcommand("link", "Link a card to another card's account");
    auto card = AddCard(command);
    auto linked = std::make_shared<std::string>();
    command->add_option("linked", *linked, "Card number to link")->required();
    command->callback([=, &till] {
      Operate(till, *card, [&](Library &library) { return library.LinkCardProc(linked->c_str()); });
    });
  }
}

// ---- purchases ----

void AddPaymentCommands(CLI::App &app, Till &till) {
  {
    CLI::App *command = app.add_subcommand("bill", "Write a bill file with one position for a plain amount");
    auto amount = AddAmount(command, "amount", "The bill's total", true);
    auto path = std::make_shared<std::string>("BILL.JSN");
    command->add_option("file", *path, "File, relative to the library's folder")->capture_default_str();
    command->callback([=, &till] {
      Library &library = Started(till);
      Check(library, library.CreateAmountBill(*amount, path->c_str()));
      std::cout << "  written: " << *path << '\n';
    });
  }
  {
    CLI::App *command = app.add_subcommand("pay", "Pay a bill");
    auto card = AddCard(command);
    auto bill = std::make_shared<std::string>("BILL.JSN");
    command->add_option("bill", *bill, "Bill file, relative to the library's folder")->capture_default_str();
    auto spend = AddAmount(command, "--spend", "Bonuses the customer asks to spend", false);
    auto confirm = std::make_shared<bool>(false);
    command->add_flag("--confirm", *confirm, "Confirm in the same call");
    command->callback([=, &till] {
      Operate(
          till, *card,
          [&](Library &library) {
            return *confirm ? library.PaymentAndConfirmProc(*spend, bill->c_str())
                            : library.PaymentProc(*spend, bill->c_str());
          },
          ShowBonuses);
    });
  }
  for (const bool is_confirm : {true, false}) {
    CLI::App *command =
        app.add_subcommand(is_confirm ? "confirm" : "cancel",
                           is_confirm ? "Confirm an earlier payment" : "Cancel an earlier payment");
    auto card = AddCard(command);
    auto rrn = std::make_shared<std::string>();
    command->add_option("rrn", *rrn, "RRN of the payment")->required();
    command->callback([=, &till] {
      Operate(till, *card, [&](Library &library) {
        return is_confirm ? library.PaymentConfirmProc(rrn->c_str())
                          : library.PaymentCancelProc(rrn->c_str());
      });
    });
  }
  {
    CLI::App *command =
        app.add_subcommand("return", "Take goods back: all of a payment, or the positions of a list");
    auto card = AddCard(command);
    auto rrn = std::make_shared<std::string>();
    command->add_option("rrn", *rrn, "RRN of the payment")->required();
    auto list = std::make_shared<std::optional<std::string>>();
    command->add_option("--list", *list, "Return-list file, relative to the library's folder");
    command->callback([=, &till] {
      Operate(
          till, *card, [&](Library &library) { return library.CashBackProc(rrn->c_str(), OrNull(*list)); },
          [](Library &library) {
            std::cout << "  returned " << ShowAmount(library.GetCashBackResult()) << '\n';
          });
    });
  }
}

// ---- journals and reports ----

void AddReportCommands(CLI::App &app, Till &till) {
  app.add_subcommand("replay", "Send the offline queue to the server")->callback([&till] {
    Library &library = Started(till);
    const size_t waiting = CountRecords(library.folder() / "OFFLINE");
    int sent = 0;
    {
      const Progress progress(TraceFile(till), waiting);
      sent = library.SendOfflinePayments();
    }
    Check(library, sent);
    std::cout << "  " << sent << " of " << waiting << " records sent\n";
  });

  CLI::App *report = app.add_subcommand("report", "Print a report of the shift");
  auto kind = std::make_shared<std::string>("summary");
  report->add_option("kind", *kind, "summary or detailed")
      ->check(CLI::IsMember({"summary", "detailed"}))
      ->capture_default_str();
  auto from = std::make_shared<std::string>("0000-00-00T00:00:00Z");
  auto to = std::make_shared<std::string>("9999-99-99T99:99:99Z");
  report->add_option("--from", *from, "After this UTC time, as 2012-12-05T10:00:00Z");
  report->add_option("--to", *to, "Before this UTC time");
  report->callback([=, &till] {
    Library &library = Started(till);
    const int length = *kind == "summary" ? library.GenerateSummaryReport(from->c_str(), to->c_str())
                                          : library.GenerateReport(from->c_str(), to->c_str());
    Check(library, length);
    if (length == 0) {
      std::cout << "  nothing to report\n";
    } else {
      DrawSlip(std::cout, library.GetReportPtr());
    }
  });
}

}  // namespace

void AddCommands(CLI::App &app, Till &till) {
  AddShopCommands(app, till);
  AddCardCommands(app, till);
  AddPaymentCommands(app, till);
  AddReportCommands(app, till);
  app.require_subcommand(1);
}

int Parse(CLI::App &app, Till &till, const std::function<void()> &parse) {
  try {
    parse();
    till.status = 0;
  } catch (const Refused &) {
    till.status = 1;
  } catch (const CLI::ParseError &error) {
    const int code = app.exit(error);
    till.status = code == 0 ? 0 : 2;
  } catch (const std::exception &error) {
    std::cerr << "register: " << error.what() << '\n';
    till.status = 2;
  }
  return till.status;
}

}  // namespace reg
