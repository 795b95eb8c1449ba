#include "loyalty_server/data_file.h"

#include <sqlite3.h>

#include <stdexcept>
#include <string_view>
#include <utility>

namespace loyalty {
namespace {

// In the file's head: that it is one of this server, and its layout.
constexpr int64_t kApplication = 0x6C6F796C;
constexpr int64_t kLayout = 1;

// Amounts are hundredths. A card's and a payment's account is a row of `accounts`.
constexpr const char *kTables = R"(
  CREATE TABLE accounts (account INTEGER NOT NULL, type TEXT NOT NULL, balance INTEGER NOT NULL,
    reserved INTEGER NOT NULL, expected INTEGER NOT NULL, PRIMARY KEY (account, type)) WITHOUT ROWID;
  CREATE TABLE cards (number TEXT PRIMARY KEY, state TEXT NOT NULL, account INTEGER NOT NULL,
    friends INTEGER NOT NULL) WITHOUT ROWID;
  CREATE TABLE payments (request_id TEXT PRIMARY KEY, number INTEGER NOT NULL, time TEXT NOT NULL,
    terminal TEXT NOT NULL, card TEXT NOT NULL, account INTEGER NOT NULL, state TEXT NOT NULL,
    total INTEGER NOT NULL) WITHOUT ROWID;
  CREATE TABLE positions (request_id TEXT NOT NULL, place INTEGER NOT NULL, number INTEGER NOT NULL,
    cost INTEGER NOT NULL, count INTEGER NOT NULL,
    spent_global INTEGER NOT NULL, spent_local INTEGER NOT NULL, spent_discount INTEGER NOT NULL,
    earned_global INTEGER NOT NULL, earned_local INTEGER NOT NULL, earned_discount INTEGER NOT NULL,
    fee INTEGER NOT NULL, returned_sum INTEGER NOT NULL, returned_count INTEGER NOT NULL,
    PRIMARY KEY (request_id, place)) WITHOUT ROWID;
  CREATE TABLE accepted_ids (request_id TEXT PRIMARY KEY) WITHOUT ROWID;
  CREATE TABLE last_ids (terminal TEXT PRIMARY KEY, request_id TEXT NOT NULL) WITHOUT ROWID;
  CREATE TABLE locks (terminal TEXT PRIMARY KEY, is_locked INTEGER NOT NULL) WITHOUT ROWID;
  CREATE TABLE used_tokens (token TEXT PRIMARY KEY) WITHOUT ROWID;
  CREATE TABLE answers (count INTEGER NOT NULL);
  INSERT INTO answers VALUES (0);
)";

class DataFile : public Store {
 public:
  explicit DataFile(std::string path) : path_(std::move(path)) {
    try {
      Open();
    } catch (...) {
      sqlite3_close_v2(connection_);
      throw;
    }
  }
  ~DataFile() override { sqlite3_close_v2(connection_); }

  State Load() override;
  void Keep(const State &state, const Changes &changes) override;

 private:
  class Statement;

  [[noreturn]] void Fail(const std::string &what) const { throw std::runtime_error(path_ + ": " + what); }
  void Check(int result) const {
    if (result == SQLITE_OK || result == SQLITE_ROW || result == SQLITE_DONE) return;
    if (result == SQLITE_BUSY) Fail("another program is using it");
    Fail(sqlite3_errmsg(connection_));
  }
  void Run(const char *sql) { Check(sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr)); }
  int64_t Number(const std::string &sql);
  void Open();
  void Write(const State &state, const Changes &changes);
  void WritePayment(const Payment &payment);
  size_t Account(int64_t account, const State &state) const;

  std::string path_;
  sqlite3 *connection_ = nullptr;
};

// One SQL statement, prepared; bound and run as often as needed.
class DataFile::Statement {
 public:
  Statement(const DataFile *file, const std::string &sql) : file_(file) {
    file_->Check(sqlite3_prepare_v2(file_->connection_, sql.c_str(), -1, &statement_, nullptr));
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement &) = delete;
  Statement &operator=(const Statement &) = delete;

  template <typename... Values>
  void Run(const Values &...values) {
    int column = 0;
    (Bind(++column, values), ...);
    file_->Check(sqlite3_step(statement_));
    file_->Check(sqlite3_reset(statement_));
  }

  // The next row of a question; false behind the last.
  bool Next() {
    const int result = sqlite3_step(statement_);
    file_->Check(result);
    column_ = 0;
    return result == SQLITE_ROW;
  }
  int64_t Number() { return sqlite3_column_int64(statement_, column_++); }
  std::string Text() {
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement_, column_));
    const auto size = static_cast<size_t>(sqlite3_column_bytes(statement_, column_++));
    return text == nullptr ? std::string() : std::string(text, size);
  }

 private:
  void Bind(int column, int64_t value) { file_->Check(sqlite3_bind_int64(statement_, column, value)); }
  // Not copied: it outlives the call of Run.
  void Bind(int column, std::string_view value) {
    file_->Check(
        sqlite3_bind_text(statement_, column, value.data(), static_cast<int>(value.size()), nullptr));
  }

  const DataFile *file_;
  sqlite3_stmt *statement_ = nullptr;
  int column_ = 0;
};

int64_t DataFile::Number(const std::string &sql) {
  Statement statement(this, sql);
  return statement.Next() ? statement.Number() : 0;
}

void DataFile::Open() {
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
  Check(sqlite3_open_v2(path_.c_str(), &connection_, kFlags, nullptr));
  // The programme's state is in this process too: two servers on one file would each overwrite the other's.
  Run("PRAGMA locking_mode = EXCLUSIVE");
  const int64_t application = Number("PRAGMA application_id");
  const int64_t layout = Number("PRAGMA user_version");
  const bool is_new = application == 0 && Number("SELECT count(*) FROM sqlite_master") == 0;
  if (!is_new && application != kApplication) Fail("not a data file of loyalty_server");
  if (!is_new && layout != kLayout) Fail("made by another version of loyalty_server");
  // What is kept survives the end of the process, and of the machine.
  Run("PRAGMA journal_mode = WAL");
  Run("PRAGMA synchronous = FULL");
  Run("BEGIN EXCLUSIVE");
  if (is_new) {
    Run(kTables);
    Run(("PRAGMA application_id = " + std::to_string(kApplication)).c_str());
    Run(("PRAGMA user_version = " + std::to_string(kLayout)).c_str());
  }
  Run("COMMIT");
}

size_t DataFile::Account(int64_t account, const State &state) const {
  if (account < 0 || static_cast<size_t>(account) >= state.accounts.size()) Fail("an account is missing");
  return static_cast<size_t>(account);
}

State DataFile::Load() {
  State state;
  for (Statement row(this,
                     "SELECT account, type, balance, reserved, expected FROM accounts ORDER BY account");
       row.Next();) {
    const auto account = static_cast<size_t>(row.Number());
    if (account > state.accounts.size()) Fail("an account is missing");
    if (account == state.accounts.size()) state.accounts.emplace_back();
    AccountType type;
    if (!FindAccountType(row.Text(), &type)) Fail("an account of an unknown type");
    Purse &purse = state.accounts[account][static_cast<size_t>(type)];
    purse.balance = row.Number();
    purse.reserved = row.Number();
    purse.expected = row.Number();
  }
  for (Statement row(this, "SELECT number, state, account, friends FROM cards"); row.Next();) {
    Card card;
    card.number = row.Text();
    if (!FindCardState(row.Text(), &card.state)) Fail("a card of an unknown state");
    card.account = Account(row.Number(), state);
    card.friends = static_cast<int32_t>(row.Number());
    state.cards[card.number] = card;
  }
  for (Statement row(this,
                     "SELECT request_id, number, time, terminal, card, account, state, total FROM payments");
       row.Next();) {
    Payment payment;
    payment.requestId = row.Text();
    payment.number = static_cast<uint64_t>(row.Number());
    payment.time = row.Text();
    payment.terminal = row.Text();
    payment.card = row.Text();
    payment.account = Account(row.Number(), state);
    if (!FindPaymentState(row.Text(), &payment.state)) Fail("a payment of an unknown state");
    payment.totalSum = row.Number();
    state.payments[payment.requestId] = payment;
  }
  for (Statement row(this,
                     "SELECT request_id, number, cost, count, spent_global, spent_local, spent_discount,"
                     " earned_global, earned_local, earned_discount, fee, returned_sum, returned_count"
                     " FROM positions ORDER BY request_id, place");
       row.Next();) {
    const auto payment = state.payments.find(row.Text());
    if (payment == state.payments.end()) Fail("a position without its payment");
    Position position;
    position.number = static_cast<int32_t>(row.Number());
    position.cost = row.Number();
    position.count = row.Number();
    for (int64_t &amount : position.spent) amount = row.Number();
    for (int64_t &amount : position.earned) amount = row.Number();
    position.fee = row.Number();
    position.returnedSum = row.Number();
    position.returnedCount = row.Number();
    payment->second.positions.push_back(position);
  }
  for (Statement row(this, "SELECT request_id FROM accepted_ids"); row.Next();) {
    state.acceptedIds.insert(row.Text());
  }
  for (Statement row(this, "SELECT terminal, request_id FROM last_ids"); row.Next();) {
    const std::string terminal = row.Text();
    const std::string id = row.Text();
    if (!IsRequestId(id)) Fail("a last request id that is none");
    state.lastIds[terminal] = id;
  }
  for (Statement row(this, "SELECT terminal, is_locked FROM locks"); row.Next();) {
    const std::string terminal = row.Text();
    state.locks[terminal] = row.Number() != 0;
  }
  for (Statement row(this, "SELECT token FROM used_tokens"); row.Next();) state.usedTokens.insert(row.Text());
  state.answers = static_cast<uint64_t>(Number("SELECT count FROM answers"));
  return state;
}

void DataFile::Keep(const State &state, const Changes &changes) {
  Run("BEGIN");
  try {
    Write(state, changes);
    Run("COMMIT");
  } catch (...) {
    // A full disk has ended the transaction already.
    if (sqlite3_get_autocommit(connection_) == 0) {
      sqlite3_exec(connection_, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    throw;
  }
}

void DataFile::Write(const State &state, const Changes &changes) {
  for (const auto &change : changes.accounts) {
    Statement write(this, "REPLACE INTO accounts VALUES (?, ?, ?, ?, ?)");
    for (const AccountType type : kAllAccountTypes) {
      const Purse &purse = state.accounts[change.first][static_cast<size_t>(type)];
      write.Run(static_cast<int64_t>(change.first), AccountName(type), purse.balance, purse.reserved,
                purse.expected);
    }
  }
  for (const auto &change : changes.cards) {
    const Card &card = state.cards.at(change.first);
    Statement(this, "REPLACE INTO cards VALUES (?, ?, ?, ?)")
        .Run(card.number, CardStateName(card.state), static_cast<int64_t>(card.account), card.friends);
  }
  for (const auto &change : changes.payments) WritePayment(state.payments.at(change.first));
  for (const std::string &id : changes.acceptedIds) {
    Statement(this, "INSERT INTO accepted_ids VALUES (?)").Run(id);
  }
  for (const auto &change : changes.lastIds) {
    Statement(this, "REPLACE INTO last_ids VALUES (?, ?)").Run(change.first, state.lastIds.at(change.first));
  }
  for (const auto &change : changes.locks) {
    Statement(this, "REPLACE INTO locks VALUES (?, ?)")
        .Run(change.first, static_cast<int64_t>(state.locks.at(change.first)));
  }
  for (const std::string &token : changes.usedTokens) {
    Statement(this, "INSERT INTO used_tokens VALUES (?)").Run(token);
  }
  Statement(this, "UPDATE answers SET count = ?").Run(static_cast<int64_t>(state.answers));
}

void DataFile::WritePayment(const Payment &payment) {
  Statement(this, "REPLACE INTO payments VALUES (?, ?, ?, ?, ?, ?, ?, ?)")
      .Run(payment.requestId, static_cast<int64_t>(payment.number), payment.time, payment.terminal,
           payment.card, static_cast<int64_t>(payment.account), PaymentStateName(payment.state),
           payment.totalSum);
  Statement write(this, "REPLACE INTO positions VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  int64_t place = 0;
  for (const Position &position : payment.positions) {
    write.Run(payment.requestId, ++place, position.number, position.cost, position.count, position.spent[0],
              position.spent[1], position.spent[2], position.earned[0], position.earned[1],
              position.earned[2], position.fee, position.returnedSum, position.returnedCount);
  }
}

}  // namespace

std::unique_ptr<Store> OpenDataFile(const std::string &path) {
  return std::make_unique<DataFile>(path);
}

}  // namespace loyalty
