// A loyalty server for the bench: a shop floor's programme in memory, behind a socket, with faults on demand.
#include <CLI/CLI.hpp>
#include <asio.hpp>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <deque>
#include <fstream>
#include <iostream>
#include <mutex>
#include <sstream>
#include <thread>

#include "loyalty_server/console.h"

namespace {

// What the main thread waits for: lines typed, or the end.
struct Inbox {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::string> lines;
  bool is_ended = false;

  void End() {
    const std::lock_guard<std::mutex> lock(mutex);
    is_ended = true;
    changed.notify_one();
  }
};

const char *kExamples =
    "\nWithout --shop there are these cards (any terminal but 99999, which is locked, may use them):\n"
    "  1000000001 active, with 500.00 GLOBAL, 200.00 LOCAL, 50.00 DISCOUNT\n"
    "  1000000002 active and empty\n"
    "  1000000003, 1000000004, 1000000005, 1000000008 sold, not active\n"
    "  1000000006 locked\n"
    "  1000000007 sold; the token TOKEN7 exchanges another card for it\n"
    "\nCommands are read from standard input; \"help\" lists them.\n";

int Run(int argc, char **argv) {
  CLI::App app{"A loyalty server for the bench: cards, bonuses and payments in memory, faults on demand."};
  loyalty::ServerOptions options;
  std::string shop_file;
  std::string fault_text;
  std::string log_file;
  std::string version;
  std::string update;
  std::vector<std::string> terminals;
  loyalty::Rates rates;
  bool is_quiet = false;
  long long idle_seconds = 30;

  app.add_option("--address", options.address, "Address to listen on")->capture_default_str();
  app.add_option("--port", options.port, "Port to listen on; 0 takes a free one")->capture_default_str();
  app.add_option("--shop", shop_file, "JSON file with cards, terminals and rates")->check(CLI::ExistingFile);
  const auto *global =
      app.add_option("--global", rates.global, "Percent earned as GLOBAL bonuses")->check(CLI::Range(0, 100));
  const auto *local =
      app.add_option("--local", rates.local, "Percent earned as LOCAL bonuses")->check(CLI::Range(0, 100));
  const auto *discount = app.add_option("--discount", rates.discount, "Percent earned as DISCOUNT bonuses")
                             ->check(CLI::Range(0, 100));
  const auto *fee = app.add_option("--fee", rates.organizerFee, "Percent of the organiser's fee")
                        ->check(CLI::Range(0, 100));
  const auto *limit =
      app.add_option("--spend-limit", rates.spendLimit, "Percent of a position that bonuses may pay")
          ->check(CLI::Range(0, 100));
  app.add_option("--terminal", terminals, "Serve only this terminal; may be given several times");
  app.add_option("--protocol", version, "Protocol version; \"1\" takes every 1.x");
  app.add_option("--update", update, "Tell terminals of a new version")
      ->check(CLI::IsMember({"none", "offered", "required"}));
  const auto *any_bill = app.add_flag("--any-bill", "Take bills whose positions do not add up");
  const auto *no_resume = app.add_flag("--no-resume-ids",
                                       "Answer a replayed record with its own request id: the terminal then "
                                       "goes on from there and repeats ids");
  app.add_option("--fault", fault_text, "Start with a fault, as \"cut 120 times 2\"");
  app.add_option("--idle", idle_seconds, "Drop a client that is silent for so many seconds")
      ->check(CLI::Range(1LL, 86400LL))
      ->capture_default_str();
  app.add_option("--max-request", options.mostBodyBytes, "Longest request body in bytes")
      ->capture_default_str();
  app.add_option("--log", log_file, "Append the log to this file instead of standard error");
  app.add_flag("--quiet", is_quiet, "No log");
  app.footer(kExamples + std::string("\nFaults:\n") + loyalty::FaultHelp());
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &error) {
    return app.exit(error);
  }

  loyalty::Shop shop = loyalty::BuiltInShop();
  if (!shop_file.empty()) {
    std::ifstream file(shop_file, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file) throw std::runtime_error(shop_file + " cannot be read");
    try {
      shop = loyalty::ShopFromJson(text.str());
    } catch (const std::invalid_argument &error) {
      throw std::runtime_error(shop_file + ": " + error.what());
    }
  }
  if (*global) shop.rates.global = rates.global;
  if (*local) shop.rates.local = rates.local;
  if (*discount) shop.rates.discount = rates.discount;
  if (*fee) shop.rates.organizerFee = rates.organizerFee;
  if (*limit) shop.rates.spendLimit = rates.spendLimit;
  if (!version.empty()) shop.protocolVersion = version;
  if (!update.empty()) loyalty::FindUpdate(update, &shop.update);
  if (*any_bill) shop.isBillChecked = false;
  if (*no_resume) shop.isIdResumedAfterReplay = false;
  if (!shop.isIdResumedAfterReplay) {
    std::cerr << "loyalty_server: warning: a replayed record is answered with its own id; the terminal goes "
                 "on from there and sends ids that it has used before\n";
  }
  for (const std::string &terminal : terminals) {
    shop.isAnyTerminalKnown = false;
    shop.terminals.emplace(terminal, false);
  }

  std::ofstream log_stream;
  if (!log_file.empty()) {
    log_stream.open(log_file, std::ios::app | std::ios::binary);
    if (!log_stream) throw std::runtime_error(log_file + " cannot be written");
  }
  if (!is_quiet) {
    std::ostream &out = log_file.empty() ? std::cerr : log_stream;
    options.log = [&out](const std::string &line) { out << line + "\n" << std::flush; };
  }
  options.idleTime = std::chrono::seconds(idle_seconds);

  const loyalty::Fault fault = fault_text.empty() ? loyalty::Fault() : loyalty::ParseFault(fault_text);
  loyalty::Server server(loyalty::Programme(std::move(shop)), options);
  server.SetFault(fault);
  std::cout << "listening on " << server.address() << std::endl;

  // Shared with the reading thread, which nothing can wake: it is left behind at the end.
  const auto inbox = std::make_shared<Inbox>();
  std::thread([inbox] {
    for (std::string line; std::getline(std::cin, line);) {
      const std::lock_guard<std::mutex> lock(inbox->mutex);
      inbox->lines.push_back(line);
      inbox->changed.notify_one();
    }
  }).detach();

  asio::io_context signal_context;
  asio::signal_set signals(signal_context, SIGINT, SIGTERM);
  signals.async_wait([&](const asio::error_code &error, int) {
    if (!error) inbox->End();
  });
  std::thread signal_thread([&] { signal_context.run(); });

  for (bool is_running = true; is_running;) {
    std::unique_lock<std::mutex> lock(inbox->mutex);
    inbox->changed.wait(lock, [&] { return inbox->is_ended || !inbox->lines.empty(); });
    if (inbox->is_ended) break;
    const std::string line = inbox->lines.front();
    inbox->lines.pop_front();
    lock.unlock();
    const loyalty::ConsoleReply reply = loyalty::RunCommand(&server, line);
    std::cout << reply.text << std::flush;
    is_running = !reply.isQuit;
  }
  signal_context.stop();
  signal_thread.join();
  server.Stop();
  return 0;
}

}  // namespace

int main(int argc, char **argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception &error) {
    std::fputs("loyalty_server: ", stderr);
    std::fputs(error.what(), stderr);
    std::fputs("\n", stderr);
  }
  return 1;
}
