#include "network.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/platform.h"

namespace {

std::vector<std::string> answers;
size_t turn;
std::string answer;
size_t piece = 500;
size_t given;
size_t pieces_left;
size_t pieces_in_all = fuzz::kNeverBreaks;
bool broke;
std::vector<std::string> sent;

constexpr lumo::SOCKET kSocket = 7;

}  // namespace

// The linker turns the library's calls into these.
extern "C" {

lumo::SOCKET __wrap_lumo_socket(int family, int type, int protocol);
int __wrap_lumo_setsockopt(lumo::SOCKET socket, int level, int option, const char *value, int length);
int __wrap_lumo_connect(lumo::SOCKET socket, const lumo::sockaddr *address, int length);
int __wrap_lumo_send(lumo::SOCKET socket, const char *data, int length, int flags);
int __wrap_lumo_recv(lumo::SOCKET socket, char *buffer, int capacity, int flags);
int __wrap_lumo_shutdown(lumo::SOCKET socket, int how);
int __wrap_lumo_closesocket(lumo::SOCKET socket);

lumo::SOCKET __wrap_lumo_socket(int, int, int) {
  return kSocket;
}

int __wrap_lumo_setsockopt(lumo::SOCKET, int, int, const char *, int) {
  return 0;
}

int __wrap_lumo_connect(lumo::SOCKET, const lumo::sockaddr *, int) {
  answer = answers[turn++ % answers.size()];
  given = 0;
  pieces_left = pieces_in_all;
  broke = false;
  return 0;
}

int __wrap_lumo_send(lumo::SOCKET, const char *data, int length, int) {
  sent.emplace_back(data, static_cast<size_t>(length));
  return length;
}

int __wrap_lumo_recv(lumo::SOCKET, char *buffer, int capacity, int) {
  broke = pieces_left == 0;
  if (broke) return -1;
  --pieces_left;
  const size_t count = std::min({piece, static_cast<size_t>(capacity), answer.size() - given});
  std::memcpy(buffer, answer.data() + given, count);
  given += count;
  return static_cast<int>(count);
}

int __wrap_lumo_shutdown(lumo::SOCKET, int) {
  return 0;
}

int __wrap_lumo_closesocket(lumo::SOCKET) {
  return 0;
}

}  // extern "C"

namespace fuzz {

void AnswerWith(const std::string &bytes, size_t new_piece, size_t pieces) {
  answers = {bytes};
  piece = std::max<size_t>(new_piece, 1);
  pieces_in_all = pieces;
}

void AnswerInTurn(const std::vector<std::string> &new_answers) {
  answers = new_answers;
  turn = 0;
  piece = 500;
  pieces_in_all = kNeverBreaks;
}

bool Broke() {
  return broke;
}

std::vector<std::string> TakeSent() {
  return std::exchange(sent, {});
}

}  // namespace fuzz
