#include "loyalty_server/server.h"

#include <algorithm>
#include <array>
#include <asio.hpp>
#include <deque>
#include <future>
#include <mutex>
#include <set>
#include <thread>

#include "loyalty_server/request_reader.h"

namespace loyalty {
namespace {

using asio::ip::tcp;
using std::chrono::milliseconds;

constexpr milliseconds kAcceptRetry{50};

}  // namespace

struct Server::Impl {
  class Session;

  Impl(Programme programme_in, ServerOptions options_in)
      : options(std::move(options_in)),
        programme(std::move(programme_in)),
        acceptor(context),
        accept_timer(context) {
    endpoint = tcp::endpoint(asio::ip::make_address(options.address), options.port);
    Bind();
    endpoint = acceptor.local_endpoint();
    Listen();
    thread = std::thread([this] { context.run(); });
  }

  void Bind();
  void Listen();
  void Accept();
  void SetFaultHere(const Fault &next);
  Fault TakeFault(const OperationNames *operation);
  void Log(const std::string &text) {
    if (options.log) options.log(programme.Now() + " " + text);
  }

  ServerOptions options;
  std::mutex mutex;  // guards the programme and what is counted here
  Programme programme;
  Fault fault;
  std::uint64_t exchanges = 0;

  // Only in the server's thread from here on.
  asio::io_context context;
  asio::executor_work_guard<asio::io_context::executor_type> work = asio::make_work_guard(context);
  tcp::acceptor acceptor;  // bound without listening while connections are refused: the port stays ours
  bool is_listening = false;
  asio::steady_timer accept_timer;
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
                            [self = shared_from_this()](const asio::error_code &error, std::size_t count) {
                              self->OnRead(error, count);
                            });
  }

  void OnRead(const asio::error_code &error, std::size_t count) {
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
      impl_->Log("request refused: " + reader_.complaint() + ", HTTP Status " +
                 std::to_string(reader_.http_status()));
    }
    Send(HttpErrorPage(reader_.http_status()));
  }

  void Answer() {
    const OperationNames *operation = FindOperation(reader_.method());
    std::string text;
    {
      const std::lock_guard<std::mutex> lock(impl_->mutex);
      ++impl_->exchanges;
      if (operation == nullptr) {
        impl_->Log("request refused: no operation " + Printable(reader_.method()) + ", HTTP Status 404");
        text = HttpErrorPage(404);
      } else {
        fault_ = impl_->TakeFault(operation);
        Reply reply;
        const bool is_asked = IsProgrammeAsked(fault_.kind);
        if (is_asked) {
          reply = impl_->programme.Handle(*operation, reader_.body(),
                                          fault_.kind == FaultKind::kRefusal ? fault_.code : Code::kOk);
        }
        text = fault_.kind == FaultKind::kSilence ? std::string() : Spoil(fault_, std::move(reply.document));
        if (fault_.kind == FaultKind::kCut || fault_.kind == FaultKind::kReset) {
          const std::size_t most =
              fault_.number == kHalf ? text.size() / 2 : static_cast<std::size_t>(fault_.number);
          text.resize(std::min(text.size(), most));
        }
        impl_->Log(Line(*operation, reply, is_asked, text.size()));
      }
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

  static std::string Word(const std::string &text) { return text.empty() ? "-" : Printable(text); }

  std::string Line(const OperationNames &operation, const Reply &reply, bool is_asked,
                   std::size_t sent) const {
    std::string line;
    if (is_asked) {
      line = "terminal " + Word(reply.terminal) + "  " + operation.method + "  card " + Word(reply.card) +
             "  id " + Word(reply.requestId);
      if (!reply.details.empty()) line += "  " + Printable(reply.details, 300);
      line +=
          std::string("  ") + (reply.code == Code::kOk ? "SUCCESS" : "ERROR") + " " + CodeName(reply.code);
    } else {
      line = std::string(operation.method) + "  not done";
    }
    line += "  in " + std::to_string(reader_.body().size()) + " out " + std::to_string(sent);
    if (fault_.kind != FaultKind::kOff) line += "  [" + Printable(FaultText(fault_), 200) + "]";
    return line;
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
    const std::size_t left = out_.size() - sent_;
    if (left == 0) return Finish();
    const bool is_in_pieces = fault_.kind == FaultKind::kPieces;
    const std::size_t most = is_in_pieces ? static_cast<std::size_t>(fault_.number) : std::size_t{65536};
    Watch();
    socket_.async_write_some(asio::buffer(out_.data() + sent_, std::min(left, most)),
                             [self = shared_from_this()](const asio::error_code &error, std::size_t count) {
                               self->OnSent(error, count);
                             });
  }

  void OnSent(const asio::error_code &error, std::size_t count) {
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
                            [self = shared_from_this()](const asio::error_code &error, std::size_t) {
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
    if (!complaint.empty()) {
      const std::lock_guard<std::mutex> lock(impl_->mutex);
      impl_->Log(complaint);
    }
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
  std::size_t sent_ = 0;
  std::size_t received_ = 0;
  bool is_answered_ = false;
  bool is_ended_ = false;
};

void Server::Impl::Bind() {
  acceptor.open(endpoint.protocol());
#ifndef _WIN32
  // There the option would let two programs listen on one port; here it takes the port back from closed
  // connections.
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
    if (sessions.size() < options.mostConnections) {
      const auto session = std::make_shared<Session>(this, std::move(socket));
      sessions.insert(session);
      session->Start();
    } else {
      const std::lock_guard<std::mutex> lock(mutex);
      Log("connection dropped: there are too many");
    }
    Accept();
  });
}

// The fault for this request. One that is counted is off after its last time.
Fault Server::Impl::TakeFault(const OperationNames *operation) {
  if (fault.operation != nullptr && fault.operation != operation) return Fault();
  Fault taken = fault;
  if (fault.times != kUntilOff && --fault.times == 0) fault = Fault();
  taken.times = kUntilOff;
  taken.operation = nullptr;
  return taken;
}

void Server::Impl::SetFaultHere(const Fault &next) {
  const bool must_listen = next.kind != FaultKind::kRefuse;
  if (!must_listen && is_listening) {
    is_listening = false;
    accept_timer.cancel();
    acceptor.close();
  }
  if (!acceptor.is_open()) Bind();
  if (must_listen && !is_listening) Listen();
  const std::lock_guard<std::mutex> lock(mutex);
  fault = next;
}

Server::Server(Programme programme, ServerOptions options)
    : impl_(std::make_unique<Impl>(std::move(programme), std::move(options))) {}

Server::~Server() {
  Stop();
}

std::uint16_t Server::port() const {
  return impl_->endpoint.port();
}

std::string Server::address() const {
  return impl_->options.address + ":" + std::to_string(port());
}

void Server::SetFault(Fault fault) {
  if (!impl_->thread.joinable()) return;
  std::promise<void> done;
  asio::post(impl_->context, [&] {
    try {
      impl_->SetFaultHere(fault);
      done.set_value();
    } catch (...) {
      done.set_exception(std::current_exception());
    }
  });
  done.get_future().get();
}

Fault Server::fault() const {
  const std::lock_guard<std::mutex> lock(impl_->mutex);
  return impl_->fault;
}

void Server::Visit(const std::function<void(Programme &)> &visitor) {
  const std::lock_guard<std::mutex> lock(impl_->mutex);
  visitor(impl_->programme);
}

std::uint64_t Server::exchanges() const {
  const std::lock_guard<std::mutex> lock(impl_->mutex);
  return impl_->exchanges;
}

void Server::Stop() {
  if (!impl_->thread.joinable()) return;
  asio::post(impl_->context, [impl = impl_.get()] {
    asio::error_code ignored;
    impl->accept_timer.cancel();
    impl->acceptor.close(ignored);
    for (const auto &session : impl->sessions) session->Close();
    impl->sessions.clear();
    impl->context.stop();
  });
  impl_->thread.join();
}

}  // namespace loyalty
