#include "interrupt.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <thread>
#include <utility>

#ifdef _WIN32
#include <windows.h>
#else
#include <pthread.h>

#include <csignal>
#endif

namespace reg {
namespace {

// Never destroyed: threads look at them until the process is gone.
std::mutex &busy = *new std::mutex;
std::function<void()> &at_end = *new std::function<void()>;
std::atomic<int> interrupted{0};  // the status to end with

// The caller holds `busy` for good.
[[noreturn]] void End(int status) {
  at_end();
  std::cout.flush();
  std::_Exit(status);
}

[[noreturn]] void Interrupt(int status) {
  interrupted = status;
  if (!busy.try_lock()) {
    std::fputs("register: interrupted; what runs is finished first\n", stderr);
    busy.lock();
  }
  End(status);
}

#ifdef _WIN32
constexpr int kInterrupted = 130;
constexpr int kTerminated = 143;

BOOL WINAPI OnConsoleEvent(DWORD event) {
  Interrupt(event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT ? kInterrupted : kTerminated);
}
#endif

}  // namespace

Busy::Busy() {
  busy.lock();
}

Busy::~Busy() {
  if (interrupted != 0) End(interrupted);
  busy.unlock();
  // An interrupt that came between these two lines: its thread takes the lock and ends the process.
  while (interrupted != 0) std::this_thread::sleep_for(std::chrono::seconds(1));
}

void WatchForInterrupts(std::function<void()> before_end) {
  at_end = std::move(before_end);
#ifdef _WIN32
  SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
#else
  std::signal(SIGPIPE, SIG_IGN);  // whoever reads the output may leave; the call goes on
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM}) sigaddset(&signals, signal);
  // Under nohup it is not to end with the terminal; a signal that is waited for would come all the same.
  struct sigaction hang_up = {};
  if (sigaction(SIGHUP, nullptr, &hang_up) != 0 || hang_up.sa_handler != SIG_IGN) sigaddset(&signals, SIGHUP);
  // For every thread: a call that waits for the server must not even be woken.
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  // The thread that waits takes no others: they are for the one that knows which call runs.
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  std::thread([signals] {
    int signal = 0;
    sigwait(&signals, &signal);
    Interrupt(128 + signal);
  }).detach();
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
#endif
}

void EndProcess(int status) {
  busy.lock();
  End(interrupted != 0 ? interrupted.load() : status);
}

}  // namespace reg
