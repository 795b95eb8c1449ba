#include "loyalty_server/server.h"

#include <algorithm>
#include <array>
#include <asio.hpp>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <future>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

#include "loyalty_server/request_reader.h"

#if defined(__linux__)
#include <linux/filter.h>
#include <sys/socket.h>
#endif

namespace loyalty {
namespace {

using asio::ip::tcp;
using std::chrono::milliseconds;

constexpr milliseconds kAcceptRetry{50};
constexpr size_t kMostTextKept = 64 * 1024;

// A filter that takes no packet: the system drops even the first one of a connection, without a word to the
// client. Connections that are open already are not touched.
void SetBlackHole(tcp::acceptor *acceptor, bool is_on) {
#if defined(__linux__)
  sock_filter nothing = {BPF_RET | BPF_K, 0, 0, 0};
  const sock_fprog program = {1, &nothing};
  const int unused = 0;
  const int result =
      is_on ? setsockopt(acceptor->native_handle(), SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program)
            : setsockopt(acceptor->native_handle(), SOL_SOCKET, SO_DETACH_FILTER, &unused, sizeof unused);
  if (result != 0 && is_on) throw std::system_error(errno, std::generic_category(), "blackhole");
#else
  (void)acceptor;
  (void)is_on;
#endif
}

constexpr bool kHasBlackHole =
#if defined(__linux__)
    true;
#else
    false;
#endif

std::string Word(const std::string &text) {
  return text.empty() ? "-" : Printable(text);
}

// As it is logged.
std::string Line(const Exchange &exchange) {
  if (!exchange.note.empty()) return exchange.note;
  std::string line;
  if (exchange.isDone) {
    line = "terminal " + Word(exchange.terminal) + "  " + exchange.operation + "  card " +
           Word(exchange.card) + "  id " + Word(exchange.requestId);
    if (!exchange.details.empty()) line += "  " + Printable(exchange.details, 300);
    line += std::string("  ") + (exchange.code == Code::kOk ? "SUCCESS" : "ERROR") + " " +
            CodeName(exchange.code);
  } else {
    line = exchange.operation + "  not done";
  }
  line += "  in " + std::to_string(exchange.requestBytes) + " out " + std::to_string(exchange.answerBytes);
  if (!exchange.fault.empty()) line += "  [" + Printable(exchange.fault, 200) + "]";
  return line;
}

}  // namespace

struct Server::Impl {
  class Session;

  Impl(Programme programme_in, ServerOptions options_in)
      : options(std::move(options_in)),
        programme(std::move(programme_in)),
        acceptor(context),
        accept_timer(context),
        fault_timer(context),
        signals(context) {
    try {
      endpoint = tcp::endpoint(asio::ip::make_address(options.address), options.port);
      Bind();
      endpoint = acceptor.local_endpoint();
      Listen();
    } catch (const std::system_error &error) {
      const std::string address = options.address + ":" + std::to_string(options.port);
      throw std::system_error(error.code(), "cannot listen on " + address);
    }
    if (options.onInterrupt) AwaitInterrupt();
    thread = std::thread([this] { context.run(); });
  }

  void Bind();
  void Listen();
  void Accept();
  void AwaitInterrupt();
  void Obey(const Fault &fault);
  void Publish(FaultPlan plan);
  void GoOnWith(FaultPlan plan);
  Fault TakeFault(const OperationNames *operation);
  bool TakeHangUp();
  void KeepCount(FaultPlan plan);
  // The mutex is held for these.
  void Keep(Exchange exchange);
  void Touch() {
    ++revision;
    changed.notify_all();
  }

  void Note(const std::string &text) {
    const std::lock_guard<std::mutex> lock(mutex);
    Exchange exchange;
    exchange.note = text;
    Keep(std::move(exchange));
  }

  ServerOptions options;
  mutable std::mutex mutex;  // guards what follows
  mutable std::condition_variable changed;
  Programme programme;
  FaultPlan faults;  // changed in the server's thread alone, which therefore needs no lock to look at it
  uint64_t exchanges = 0;
  uint64_t revision = 1;
  std::deque<Exchange> kept;
  uint64_t last_number = 0;
  size_t bytes_kept = 0;

  // Only in the server's thread from here on.
  asio::io_context context;
  asio::executor_work_guard<asio::io_context::executor_type> work = asio::make_work_guard(context);
  tcp::acceptor acceptor;  // bound without listening while connections are refused: the port stays ours
  bool is_listening = false;
  bool is_black_hole = false;
  asio::steady_timer accept_timer;
  asio::steady_timer fault_timer;
  uint64_t faults_obeyed = 0;
  asio::signal_set signals;
  tcp::endpoint endpoint;
  std::set<std::shared_ptr<Session>> sessions;
  std::thread thread;
};

// One connection: read the request, answer, close so that the client never meets a reset it was not promised.
class Server::Impl::Session : public std::enable_shared_from_this<Session> {
 public:
  Session(Impl *impl, tcp::socket socket)
      : impl_(impl),
        socket_(std::move(socket)),
        timer_(socket_.get_executor()),
        reader_(impl->options.mostBodyBytes) {}

  void Start() {
    asio::error_code ignored;
    socket_.set_option(tcp::no_delay(true), ignored);
    Read();
  }

  void Close() {
    asio::error_code ignored;
    timer_.cancel();
    socket_.close(ignored);
  }

 private:
  void Watch() {
    timer_.expires_after(impl_->options.idleTime);
    timer_.async_wait([self = shared_from_this()](const asio::error_code &error) {
      if (error) return;
      self->End(self->is_answered_ ? "" : "dropped: no byte came or went for too long");
    });
  }

  void Read() {
    Watch();
    socket_.async_read_some(asio::buffer(buffer_),
                            [self = shared_from_this()](const asio::error_code &error, size_t count) {
                              self->OnRead(error, count);
                            });
  }

  void OnRead(const asio::error_code &error, size_t count) {
    if (is_ended_) return;
    if (error) return End(received_ == 0 ? "" : "the client left in the middle of its request");
    received_ += count;
    switch (reader_.Feed(std::string_view(buffer_.data(), count))) {
      case RequestReader::Status::kMore:
        return Read();
      case RequestReader::Status::kComplete:
        timer_.cancel();
        return Answer();
      case RequestReader::Status::kBad:
        timer_.cancel();
        return AnswerBadHead();
    }
  }

  void AnswerBadHead() {
    {
      const std::lock_guard<std::mutex> lock(impl_->mutex);
      ++impl_->exchanges;
    }
    impl_->Note("request refused: " + reader_.complaint() + ", HTTP Status " +
                std::to_string(reader_.http_status()));
    Send(HttpErrorPage(reader_.http_status()));
  }

  void Answer() {
    const OperationNames *operation = FindOperation(reader_.method());
    if (operation == nullptr) {
      {
        const std::lock_guard<std::mutex> lock(impl_->mutex);
        ++impl_->exchanges;
      }
      impl_->Note("request refused: no operation " + Printable(reader_.method()) + ", HTTP Status 404");
      return Send(HttpErrorPage(404));
    }
    fault_ = impl_->TakeFault(operation);
    std::string text;
    {
      const std::lock_guard<std::mutex> lock(impl_->mutex);
      ++impl_->exchanges;
      Exchange exchange;
      exchange.operation = operation->method;
      exchange.isDone = IsProgrammeAsked(fault_.kind);
      Reply reply;
      if (exchange.isDone) {
        reply = impl_->programme.Handle(*operation, reader_.body(),
                                        fault_.kind == FaultKind::kRefusal ? fault_.code : Code::kOk);
      }
      text = Spoil(fault_, reply.answer);
      exchange.terminal = std::move(reply.terminal);
      exchange.card = std::move(reply.card);
      exchange.requestId = std::move(reply.requestId);
      exchange.details = std::move(reply.details);
      exchange.code = reply.code;
      if (fault_.kind != FaultKind::kOff) exchange.fault = FaultText(fault_);
      exchange.request = reader_.body().substr(0, kMostTextKept);
      exchange.answer = text.substr(0, kMostTextKept);
      exchange.requestBytes = reader_.body().size();
      exchange.answerBytes = text.size();
      impl_->Keep(std::move(exchange));
    }
    switch (fault_.kind) {
      case FaultKind::kSilence:
        return AwaitClient();
      case FaultKind::kDelay:
        return Later(milliseconds(fault_.number), [self = shared_from_this(), text] { self->Send(text); });
      default:
        break;
    }
    Send(std::move(text));
  }

  template <typename Then>
  void Later(milliseconds delay, Then then) {
    timer_.expires_after(delay);
    timer_.async_wait([self = shared_from_this(), then](const asio::error_code &error) {
      if (!error && !self->is_ended_) then();
    });
  }

  void Send(std::string text) {
    is_answered_ = true;
    out_ = std::move(text);
    sent_ = 0;
    SendNext();
  }

  void SendNext() {
    const size_t left = out_.size() - sent_;
    if (left == 0) return Finish();
    const bool is_in_pieces = fault_.kind == FaultKind::kPieces;
    const size_t most = is_in_pieces ? static_cast<size_t>(fault_.number) : size_t{65536};
    Watch();
    socket_.async_write_some(asio::buffer(out_.data() + sent_, std::min(left, most)),
                             [self = shared_from_this()](const asio::error_code &error, size_t count) {
                               self->OnSent(error, count);
                             });
  }

  void OnSent(const asio::error_code &error, size_t count) {
    if (is_ended_) return;
    if (error) return End("the client left before the whole answer was sent");
    sent_ += count;
    if (fault_.kind != FaultKind::kPieces || fault_.pause == 0) return SendNext();
    Later(milliseconds(fault_.pause), [self = shared_from_this()] { self->SendNext(); });
  }

  void Finish() {
    asio::error_code ignored;
    if (fault_.kind == FaultKind::kReset) {
      socket_.set_option(asio::socket_base::linger(true, 0), ignored);
      return End("");
    }
    socket_.shutdown(tcp::socket::shutdown_send, ignored);
    Watch();
    Drain();
  }

  // Takes what the client still sends, the line feed behind the body at least: closing over unread bytes
  // would make a reset of the close, and a reset can cost the client the answer.
  void Drain() {
    socket_.async_read_some(asio::buffer(buffer_),
                            [self = shared_from_this()](const asio::error_code &error, size_t) {
                              if (self->is_ended_) return;
                              if (error) return self->End("");
                              self->Drain();
                            });
  }

  // Silence lasts until the client has enough of it.
  void AwaitClient() { Drain(); }

  void End(const std::string &complaint) {
    if (is_ended_) return;
    is_ended_ = true;
    if (!complaint.empty()) impl_->Note(complaint);
    Close();
    impl_->sessions.erase(shared_from_this());
  }

  Impl *impl_;
  tcp::socket socket_;
  asio::steady_timer timer_;
  RequestReader reader_;
  Fault fault_;
  std::array<char, 8192> buffer_{};
  std::string out_;
  size_t sent_ = 0;
  size_t received_ = 0;
  bool is_answered_ = false;
  bool is_ended_ = false;
};

void Server::Impl::Bind() {
  acceptor.open(endpoint.protocol());
#ifndef _WIN32
  // On Windows this option would let two programs listen on one port. Elsewhere it gets the port back that
  // closed connections still hold.
  acceptor.set_option(tcp::acceptor::reuse_address(true));
#endif
  try {
    acceptor.bind(endpoint);
  } catch (...) {
    asio::error_code ignored;
    acceptor.close(ignored);
    throw;
  }
}

void Server::Impl::Listen() {
  acceptor.listen();
  is_listening = true;
  Accept();
}

void Server::Impl::Accept() {
  acceptor.async_accept([this](const asio::error_code &error, tcp::socket socket) {
    if (error == asio::error::operation_aborted || !is_listening) return;
    if (error) {  // no descriptor left, or the client is gone already
      accept_timer.expires_after(kAcceptRetry);
      accept_timer.async_wait([this](const asio::error_code &waited) {
        if (!waited && is_listening) Accept();
      });
      return;
    }
    if (TakeHangUp()) {
      asio::error_code ignored;
      socket.set_option(asio::socket_base::linger(true, 0), ignored);
      socket.close(ignored);
      Note("connection reset before its request  [hangup]");
      if (!is_listening) return;
    } else if (sessions.size() < options.mostConnections) {
      const auto session = std::make_shared<Session>(this, std::move(socket));
      sessions.insert(session);
      session->Start();
    } else {
      Note("connection dropped: there are too many");
    }
    Accept();
  });
}

void Server::Impl::AwaitInterrupt() {
  signals.add(SIGINT);
  signals.add(SIGTERM);
  signals.async_wait([this](const asio::error_code &error, int) {
    if (!error) options.onInterrupt();
  });
}

void Server::Impl::Keep(Exchange exchange) {
  exchange.number = ++last_number;
  exchange.time = programme.Now();
  if (options.log) options.log(exchange.time + " " + Line(exchange));
  const auto size = [](const Exchange &one) {
    return sizeof one + one.request.size() + one.answer.size() + one.details.size();
  };
  bytes_kept += size(exchange);
  kept.push_back(std::move(exchange));
  while (!kept.empty() && (kept.size() > options.mostKept || bytes_kept > options.mostBytesKept)) {
    bytes_kept -= size(kept.front());
    kept.pop_front();
  }
  Touch();
}

// Makes the listening socket and the clock do what a fault asks for.
void Server::Impl::Obey(const Fault &fault) {
  const uint64_t obeyed = ++faults_obeyed;
  fault_timer.cancel();
  if (fault.milliseconds != kUntilOff) {
    fault_timer.expires_after(milliseconds(fault.milliseconds));
    fault_timer.async_wait([this, obeyed](const asio::error_code &error) {
      if (error || obeyed != faults_obeyed) return;
      FaultPlan next;
      {
        const std::lock_guard<std::mutex> lock(mutex);
        next = faults;
      }
      next.Advance();
      GoOnWith(std::move(next));
    });
  }

  const bool must_listen = fault.kind != FaultKind::kRefuse;
  if (!must_listen && is_listening) {
    is_listening = false;
    is_black_hole = false;
    accept_timer.cancel();
    acceptor.close();
  }
  if (!acceptor.is_open()) Bind();
  const bool must_swallow = fault.kind == FaultKind::kBlackHole;
  if (must_swallow != is_black_hole) SetBlackHole(&acceptor, must_swallow);
  is_black_hole = must_swallow;
  if (must_listen && !is_listening) Listen();
}

Fault Server::Impl::TakeFault(const OperationNames *operation) {
  FaultPlan plan = faults;
  Fault taken = plan.Take(operation);
  KeepCount(std::move(plan));
  return taken;
}

bool Server::Impl::TakeHangUp() {
  FaultPlan plan = faults;
  const bool is_taken = plan.TakeHangUp();
  KeepCount(std::move(plan));
  return is_taken;
}

void Server::Impl::KeepCount(FaultPlan plan) {
  if (plan.steps_begun() != faults.steps_begun()) return GoOnWith(std::move(plan));
  const std::lock_guard<std::mutex> lock(mutex);
  faults = std::move(plan);
}

// Who sees a fault can rely on it: it is obeyed first.
void Server::Impl::Publish(FaultPlan plan) {
  Obey(plan.fault());
  const std::lock_guard<std::mutex> lock(mutex);
  faults = std::move(plan);
  Touch();
}

// The fault before has come to its end by itself: nobody waits for what happens now.
void Server::Impl::GoOnWith(FaultPlan plan) {
  try {
    Publish(std::move(plan));
  } catch (const std::exception &error) {
    Note("the next fault is not obeyed: " + std::string(error.what()));
  }
}

Server::Server(Programme programme, ServerOptions options)
    : impl_(std::make_unique<Impl>(std::move(programme), std::move(options))) {}

Server::~Server() {
  Stop();
}

uint16_t Server::port() const {
  return impl_->endpoint.port();
}

std::string Server::address() const {
  return impl_->options.address + ":" + std::to_string(port());
}

void Server::SetFaults(FaultPlan faults) {
  if (!kHasBlackHole && faults.Has(FaultKind::kBlackHole)) {
    throw std::invalid_argument("blackhole: this system does not let a server do that");
  }
  if (!impl_->thread.joinable()) return;
  std::promise<void> done;
  asio::post(impl_->context, [&] {
    try {
      impl_->Publish(std::move(faults));
      done.set_value();
    } catch (...) {
      done.set_exception(std::current_exception());
    }
  });
  done.get_future().get();
}

FaultPlan Server::faults() const {
  const std::lock_guard<std::mutex> lock(impl_->mutex);
  return impl_->faults;
}

Fault Server::fault() const {
  const std::lock_guard<std::mutex> lock(impl_->mutex);
  return impl_->faults.fault();
}

void Server::Look(const std::function<void(const Programme &)> &visitor) const {
  const std::lock_guard<std::mutex> lock(impl_->mutex);
  visitor(impl_->programme);
}

void Server::Visit(const std::function<void(Programme &)> &visitor) {
  const std::lock_guard<std::mutex> lock(impl_->mutex);
  impl_->Touch();
  visitor(impl_->programme);
}

uint64_t Server::exchanges() const {
  const std::lock_guard<std::mutex> lock(impl_->mutex);
  return impl_->exchanges;
}

std::vector<Exchange> Server::ExchangesAfter(uint64_t number) const {
  const std::lock_guard<std::mutex> lock(impl_->mutex);
  const auto begin = std::find_if(impl_->kept.begin(), impl_->kept.end(),
                                  [number](const Exchange &exchange) { return exchange.number > number; });
  return std::vector<Exchange>(begin, impl_->kept.end());
}

uint64_t Server::revision() const {
  const std::lock_guard<std::mutex> lock(impl_->mutex);
  return impl_->revision;
}

uint64_t Server::AwaitChange(uint64_t known, milliseconds most) const {
  std::unique_lock<std::mutex> lock(impl_->mutex);
  impl_->changed.wait_for(lock, most, [&] { return impl_->revision != known; });
  return impl_->revision;
}

void Server::WakeWaiting() {
  const std::lock_guard<std::mutex> lock(impl_->mutex);
  impl_->Touch();
}

void Server::Stop() {
  if (!impl_->thread.joinable()) return;
  asio::post(impl_->context, [impl = impl_.get()] {
    asio::error_code ignored;
    impl->accept_timer.cancel();
    impl->fault_timer.cancel();
    impl->signals.cancel(ignored);
    impl->acceptor.close(ignored);
    for (const auto &session : impl->sessions) session->Close();
    impl->sessions.clear();
    impl->context.stop();
  });
  impl_->thread.join();
}

}  // namespace loyalty
