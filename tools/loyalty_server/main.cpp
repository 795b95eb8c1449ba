// A loyalty server for the bench: a shop floor's programme behind a socket, with faults on demand.
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <fstream>
#include <iostream>
#include <mutex>
#include <system_error>
#include <thread>

#include "loyalty_server/command_line.h"
#if LOYALTY_DATA_AND_PAGE
#include "loyalty_server/data_file.h"
#include "loyalty_server/page.h"
#endif

namespace {

// What the main thread waits for: lines typed, or the end.
class Inbox {
 public:
  void Put(const std::string &line) {
    const std::lock_guard<std::mutex> lock(mutex_);
    lines_.push_back(line);
    changed_.notify_one();
  }
  void End() {
    const std::lock_guard<std::mutex> lock(mutex_);
    is_ended_ = true;
    changed_.notify_one();
  }
  // False at the end.
  bool Take(std::string *out_line) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [&] { return is_ended_ || !lines_.empty(); });
    if (is_ended_) return false;
    *out_line = lines_.front();
    lines_.pop_front();
    return true;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::string> lines_;
  bool is_ended_ = false;
};

int Complain(int status, const std::exception &error) {
  std::cerr << "loyalty_server: " << error.what() << std::endl;
  return status;
}

int Run(loyalty::Settings settings) {
  std::ofstream log_stream;
  if (!settings.logFile.empty()) {
    log_stream.open(settings.logFile, std::ios::app | std::ios::binary);
    if (!log_stream) {
      return Complain(loyalty::kBadOptions, std::runtime_error(settings.logFile + " cannot be written"));
    }
  }
  if (!settings.isQuiet) {
    std::ostream &out = settings.logFile.empty() ? std::cerr : log_stream;
    settings.server.log = [&out](const std::string &line) { out << line + "\n" << std::flush; };
  }
  // Shared with the reading thread, which nothing can wake: it is left behind at the end.
  const auto inbox = std::make_shared<Inbox>();
  settings.server.onInterrupt = [inbox] { inbox->End(); };
  if (!settings.shop.isIdResumedAfterReplay) {
    std::cerr << "loyalty_server: warning: a replayed record is answered with its own id; the terminal goes "
                 "on from there and sends ids that it has used before"
              << std::endl;
  }

  std::unique_ptr<loyalty::Programme> programme;
  try {
    std::unique_ptr<loyalty::Store> store;
#if LOYALTY_DATA_AND_PAGE
    if (!settings.dataFile.empty()) store = loyalty::OpenDataFile(settings.dataFile);
#endif
    programme = std::make_unique<loyalty::Programme>(std::move(settings.shop), loyalty::SystemClock,
                                                     std::move(store));
  } catch (const std::exception &error) {
    return Complain(loyalty::kBadDataFile, error);
  }
  std::unique_ptr<loyalty::Server> server;
#if LOYALTY_DATA_AND_PAGE
  std::unique_ptr<loyalty::Page> page;
#endif
  try {
    server = std::make_unique<loyalty::Server>(std::move(*programme), settings.server);
#if LOYALTY_DATA_AND_PAGE
    if (settings.pagePort) {
      page = std::make_unique<loyalty::Page>(server.get(), settings.pageAddress, *settings.pagePort);
    }
#endif
  } catch (const std::system_error &error) {
    return Complain(loyalty::kBadAddress, error);
  } catch (const std::runtime_error &error) {
    return Complain(loyalty::kBadOptions, error);
  }
  try {
    server->SetFaults(std::move(settings.faults));
  } catch (const std::invalid_argument &error) {
    return Complain(loyalty::kBadOptions, error);
  }

  std::cout << "listening on " << server->address() << std::endl;
#if LOYALTY_DATA_AND_PAGE
  if (page) std::cout << "page at " << page->address() << std::endl;
#endif
  std::thread([inbox] {
    for (std::string line; std::getline(std::cin, line);) inbox->Put(line);
  }).detach();
  for (std::string line; inbox->Take(&line);) {
    const loyalty::ConsoleReply reply = loyalty::RunCommand(server.get(), line);
    if (reply.isQuit) break;
    std::cout << reply.text << std::flush;
  }
#if LOYALTY_DATA_AND_PAGE
  page.reset();
#endif
  server->Stop();
  return loyalty::kEnded;
}

}  // namespace

int main(int argc, char **argv) {
  try {
    int status = loyalty::kFailed;
    std::optional<loyalty::Settings> settings = loyalty::ReadCommandLine(argc, argv, &status);
    return settings ? Run(std::move(*settings)) : status;
  } catch (const std::exception &error) {
    return Complain(loyalty::kFailed, error);
  }
}
