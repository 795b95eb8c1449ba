// The register that a programmer would write who has libcurl, RapidJSON and SQLite and not lumo. What it
// keeps from payment to payment (the connection's handle, the database, the prepared statements) stays open.
#include <curl/curl.h>
#include <fcntl.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

#include "payment.h"

namespace bench {
namespace {

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

class Trace {
 public:
  Trace(std::string path, TraceBy by, std::vector<std::string> *kept = nullptr)
      : path_(std::move(path)), by_(by), kept_(kept) {}

  __attribute__((format(printf, 2, 3))) void operator()(const char *format, ...) const {
    va_list arguments;
    va_start(arguments, format);
    if (by_ == TraceBy::kStdio) {
      ByStdio(format, arguments);
    } else {
      ByPosix(format, arguments);
    }
    va_end(arguments);
  }

  void Append(const char *text, size_t length) const {
    const int file = open(path_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0) return;
    Require(write(file, text, length) == static_cast<ssize_t>(length), "writing the trace");
    close(file);
  }

 private:
  __attribute__((format(printf, 2, 0))) void ByStdio(const char *format, va_list arguments) const {
    FILE *file = std::fopen(path_.c_str(), "a");
    if (file == nullptr) return;
    std::vfprintf(file, format, arguments);
    std::fclose(file);
  }

  __attribute__((format(printf, 2, 0))) void ByPosix(const char *format, va_list arguments) const {
    char line[1024];
    std::string longer;
    const char *text = line;
    va_list again;
    va_copy(again, arguments);
    const auto length = static_cast<size_t>(std::vsnprintf(line, sizeof line, format, arguments));
    if (length >= sizeof line) {
      longer.resize(length + 1);
      std::vsnprintf(longer.data(), longer.size(), format, again);
      text = longer.data();
    }
    va_end(again);
    Append(text, length);
    if (kept_ != nullptr) kept_->emplace_back(text, length);
  }

  std::string path_;
  TraceBy by_;
  std::vector<std::string> *kept_;  // the lines, for whoever wants to know them
};

struct Bonus {
  int earned = 0, spend = 0, fee = 0;
  std::string account;
};

struct Good {
  std::string title, code;
  int cost = 0, order = 0, count = 0;
  std::vector<Bonus> bonuses;
};

struct Bill {
  int total = 0, length = 0, fee = 0;
  std::string number, date;
  std::vector<Good> goods;
};

constexpr int kAccountCount = 3;
constexpr const char *kAccounts[kAccountCount] = {"GLOBAL", "LOCAL", "DISCOUNT"};

int AccountNumber(const std::string &name) {
  return static_cast<int>(std::find(std::begin(kAccounts), std::end(kAccounts), name) - kAccounts);
}

// A bill or an answer comes from outside: what it holds is looked at before it is taken.
std::string Text(const rapidjson::Value &value) {
  Require(value.IsString(), "a member that must be a text");
  return {value.GetString(), value.GetStringLength()};
}

const rapidjson::Value &MemberOf(const rapidjson::Value &object, const char *name) {
  Require(object.IsObject(), "a member that must be an object");
  const auto member = object.FindMember(name);
  Require(member != object.MemberEnd(), name);
  return member->value;
}

void WriteText(Writer &writer, const char *key, const std::string &text) {
  writer.Key(key);
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void WriteNumber(Writer &writer, const char *key, int number) {
  writer.Key(key);
  writer.Int(number);
}

void WriteGood(Writer &writer, const Good &good) {
  writer.StartObject();
  WriteText(writer, "title", good.title);
  WriteText(writer, "productCode", good.code);
  WriteNumber(writer, "positionCost", good.cost);
  WriteNumber(writer, "orderNum", good.order);
  WriteNumber(writer, "cnt", good.count);
  if (!good.bonuses.empty()) {
    writer.Key("bonus");
    writer.StartArray();
    for (const Bonus &bonus : good.bonuses) {
      writer.StartObject();
      WriteNumber(writer, "earned", bonus.earned);
      WriteNumber(writer, "spend", bonus.spend);
      WriteNumber(writer, "organizerFee", bonus.fee);
      WriteText(writer, "accountType", bonus.account);
      writer.EndObject();
    }
    writer.EndArray();
  }
  writer.EndObject();
}

void WriteBill(Writer &writer, const Bill &bill, bool spends) {
  writer.StartObject();
  WriteNumber(writer, "totalSum", bill.total);
  writer.Key("spendBonus");
  writer.Bool(spends);
  WriteNumber(writer, "orderLen", bill.length);
  WriteText(writer, "billNum", bill.number);
  WriteText(writer, "billDate", bill.date);
  WriteNumber(writer, "partnerFee", bill.fee);
  writer.Key("goodList");
  writer.StartObject();
  writer.Key("good");
  writer.StartArray();
  for (const Good &good : bill.goods) WriteGood(writer, good);
  writer.EndArray();
  writer.EndObject();
  writer.EndObject();
}

std::string Amount(int hundredths) {
  char text[32];
  std::snprintf(text, sizeof text, "%d.%02d", hundredths / 100, hundredths % 100);
  return text;
}

size_t Collect(char *bytes, size_t size, size_t count, void *answer) {
  static_cast<std::string *>(answer)->append(bytes, size * count);
  return size * count;
}

class ByHand : public Till {
 public:
  ByHand(const std::string &folder, int port, TraceBy trace_by, Journal journal,
         std::vector<std::string> *lines = nullptr)
      : folder_(folder), trace_(folder + "TRACE.TXT", trace_by, lines), port_(port) {
    Require(sqlite3_open((folder + "journal.db").c_str(), &database_) == SQLITE_OK, "opening the database");
    if (journal == Journal::kUnhurried) {
      Run("PRAGMA journal_mode = WAL");
      Run("PRAGMA synchronous = NORMAL");
    }
    Run("CREATE TABLE state (name TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID");
    Run("CREATE TABLE log (id INTEGER PRIMARY KEY, record TEXT)");
    Run("INSERT INTO state VALUES ('offline', '0'), ('shiftId', '42'), ('shiftState', '1'), ('update', '0')");
    Run((std::string("INSERT INTO state VALUES ('reqId', '") + kFirstRrn + "')").c_str());
    begin_ = Prepare("BEGIN IMMEDIATE");
    commit_ = Prepare("COMMIT");
    read_state_ = Prepare("SELECT name, value FROM state");
    set_state_ = Prepare("UPDATE state SET value = ?2 WHERE name = ?1");
    append_ = Prepare("INSERT INTO log (record) VALUES (?1)");
    // Above the limit the oldest third goes.
    trim_ = Prepare(
        "DELETE FROM log WHERE (SELECT max(id) - min(id) FROM log) >= ?1 AND id < (SELECT min(id) FROM log) "
        "+ "
        "?1 / 3");
    curl_ = curl_easy_init();
    headers_ = curl_slist_append(nullptr, "Content-Type: application/json-soap;charset=UTF-8");
    const std::string url = "http://127.0.0.1:" + std::to_string(port) + "/ws/payment";
    curl_easy_setopt(curl_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl_, CURLOPT_HTTPHEADER, headers_);
    curl_easy_setopt(curl_, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl_, CURLOPT_TIMEOUT, 5L);
    curl_easy_setopt(curl_, CURLOPT_WRITEFUNCTION, Collect);
  }

  ~ByHand() override {
    for (sqlite3_stmt *statement : {begin_, commit_, read_state_, set_state_, append_, trim_}) {
      sqlite3_finalize(statement);
    }
    sqlite3_close(database_);
    curl_slist_free_all(headers_);
    curl_easy_cleanup(curl_);
  }

  std::string Pay() override {
    trace_("CreateTransaction [%s] [%s]\n", kCard, kCashier);
    ReadState();
    std::string slip = MakeHeader();
    trace_("PaymentProc(%d, %s)\n", kSpend, bench::kBill);
    trace_("PaymentProcess\n");
    MakeRrn();
    Bill bill = ReadBill();
    Exchange(bill);
    trace_("ParseOperationResponse\n");
    ReadAnswer(bill);
    trace_("Disconnect\n");
    ReadState();
    trace_("SaveState\n");
    trace_("SaveState\n");
    trace_("ERROR: SetFilePointer function failed with error 0\n");
    Keep(bill);
    RewriteBill(bill);
    slip += MakeBody(bill);
    trace_("GetTransReceiptHeader\n");
    trace_("GetTransReceiptBody\n");
    trace_("GetTransReceiptFooter\n");
    slip += std::string(kFooter) + "\n";
    trace_("CloseTransaction()\n");
    return slip;
  }

  std::string LastRecord() override {
    sqlite3_stmt *statement = Prepare("SELECT record FROM log ORDER BY id DESC LIMIT 1");
    Require(sqlite3_step(statement) == SQLITE_ROW, "reading the journal");
    std::string record(Column(statement, 0));
    sqlite3_finalize(statement);
    return record;
  }

 private:
  void Run(const char *sql) {
    Require(sqlite3_exec(database_, sql, nullptr, nullptr, nullptr) == SQLITE_OK, sql);
  }
  sqlite3_stmt *Prepare(const char *sql) {
    sqlite3_stmt *statement = nullptr;
    Require(
        sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) == SQLITE_OK,
        sql);
    return statement;
  }
  static void Step(sqlite3_stmt *statement) {
    Require(sqlite3_step(statement) == SQLITE_DONE, "writing the database");
    sqlite3_reset(statement);
  }
  void SetState(const char *name, const std::string &value) {
    sqlite3_bind_text(set_state_, 1, name, -1, SQLITE_STATIC);
    sqlite3_bind_text(set_state_, 2, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
    Step(set_state_);
  }

  // Read again, as its lines say: another program of the shop may have opened a shift or gone offline.
  void ReadState() {
    trace_("LoadState\n");
    trace_("parseJsonFile [STATE]\n");
    trace_("No BOM found 7B 22 72\n");
    trace_("ERROR: SetFilePointer function failed with error 0\n");
    int result = SQLITE_ROW;
    while ((result = sqlite3_step(read_state_)) == SQLITE_ROW) {
      const std::string_view name = Column(read_state_, 0), value = Column(read_state_, 1);
      if (name == "reqId") {
        rrn_ = value;
      } else if (name == "shiftId") {
        shift_ = value;
      } else if (name == "shiftState") {
        shift_is_open_ = value == "1";
      } else if (name == "offline") {
        is_offline_ = value == "1";
      }
    }
    Require(result == SQLITE_DONE && shift_is_open_ && !is_offline_, "the state");
    sqlite3_reset(read_state_);
  }
  static std::string_view Column(sqlite3_stmt *statement, int column) {
    return {reinterpret_cast<const char *>(sqlite3_column_text(statement, column)),
            static_cast<size_t>(sqlite3_column_bytes(statement, column))};
  }

  static std::string MakeHeader() {
    const time_t now = time(nullptr);
    tm utc = {};
    gmtime_r(&now, &utc);
    char date[40], text[200];
    std::strftime(date, sizeof date, "%Y/%m/%d      %H:%M:%S", &utc);
    std::snprintf(text, sizeof text, "%s\n%s\nТерминал %14s\n     *** КАРТА ***\n    %s\n", kHeader, date,
                  kTerminal, kCard);
    return text;
  }

  // The number that the server knows the payment by: stored before anything is sent.
  void MakeRrn() {
    trace_("FillRequest(PAYMENT)\n");
    const time_t now = time(nullptr);
    tm utc = {};
    gmtime_r(&now, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    date_ = text;
    trace_("GenerateRRN: %s\n", rrn_.c_str());
    trace_("Last RRN: %s\n", rrn_.c_str());
    const std::string day = rrn_.substr(5, 6);
    const int number = std::stoi(rrn_.substr(11));
    trace_("Scanf result: %d %s %d\n", 2, day.c_str(), number);
    trace_("Parse old RRN [%s][%d]\n", day.c_str(), number);
    std::strftime(text, sizeof text, "%y%m%d", &utc);
    char rrn[32];
    std::snprintf(rrn, sizeof rrn, "%s%s%05d", kTerminal, text, day == text ? number + 1 : 0);
    rrn_ = rrn;
    trace_("Next RRN generation [%s]\n", rrn_.c_str());
    trace_("SaveState\n");
    SetState("reqId", rrn_);
  }

  std::string ReadFile(const char *name) const {
    FILE *file = std::fopen((folder_ + name).c_str(), "rb");
    Require(file != nullptr, "opening the bill");
    std::string text;
    char piece[16384];
    size_t count = 0;
    while ((count = std::fread(piece, 1, sizeof piece, file)) != 0) text.append(piece, count);
    std::fclose(file);
    return text;
  }

  Bill ReadBill() const {
    trace_("BillParse\n");
    trace_("parseJsonFile [%s]\n", bench::kBill);
    std::string text = ReadFile(bench::kBill);
    trace_("No BOM found %02X %02X %02X\n", text[0], text[1], text[2]);
    trace_("ERROR: SetFilePointer function failed with error 0\n");
    rapidjson::Document document;
    Require(!document.ParseInsitu(text.data()).HasParseError() && document.IsObject(), "the bill");
    Bill bill;
    TakeBill(document, bill);
    return bill;
  }

  void TakeBill(const rapidjson::Value &from, Bill &bill) const {
    Require(from.IsObject(), "a member that must be an object");
    for (const auto &member : from.GetObject()) {
      if (member.name == "totalSum") {
        Take(" totalSum", bill.total, member.value);
      } else if (member.name == "orderLen") {
        Take(" orderLen", bill.length, member.value);
      } else if (member.name == "partnerFee") {
        Take(" partnerFee", bill.fee, member.value);
      } else if (member.name == "billNum") {
        Take(" billNum", bill.number, member.value);
      } else if (member.name == "billDate") {
        Take(" billDate", bill.date, member.value);
      } else if (member.name == "goodList") {
        const rapidjson::Value &goods = MemberOf(member.value, "good");
        Require(goods.IsArray(), "a member that must be an array");
        bill.goods.assign(goods.Size(), {});
        for (rapidjson::SizeType i = 0; i < goods.Size(); ++i) TakeGood(goods[i], bill.goods[i]);
      }
    }
  }

  void TakeGood(const rapidjson::Value &from, Good &good) const {
    Require(from.IsObject(), "a member that must be an object");
    for (const auto &member : from.GetObject()) {
      if (member.name == "title") {
        Take(" title", good.title, member.value);
      } else if (member.name == "productCode") {
        Take(" productCode", good.code, member.value);
      } else if (member.name == "positionCost") {
        Take(" positionCost", good.cost, member.value);
      } else if (member.name == "orderNum") {
        Take(" orderNum", good.order, member.value);
      } else if (member.name == "cnt") {
        Take(" cnt", good.count, member.value);
      } else if (member.name == "bonus") {
        Require(member.value.IsArray(), "a member that must be an array");
        good.bonuses.resize(member.value.Size());
        for (rapidjson::SizeType i = 0; i < member.value.Size(); ++i) {
          TakeBonus(member.value[i], good.bonuses[i]);
        }
      }
    }
  }

  void TakeBonus(const rapidjson::Value &from, Bonus &bonus) const {
    Require(from.IsObject(), "a member that must be an object");
    for (const auto &member : from.GetObject()) {
      if (member.name == "earned") {
        Take("  earned", bonus.earned, member.value);
      } else if (member.name == "spend") {
        Take("  spend", bonus.spend, member.value);
      } else if (member.name == "organizerFee") {
        Take("  organizerFee", bonus.fee, member.value);
      } else if (member.name == "accountType") {
        bonus.account = Text(member.value);
        Require(AccountNumber(bonus.account) < kAccountCount, "the account");
        trace_("  accountType [%d]\n", AccountNumber(bonus.account));
      }
    }
  }

  void Take(const char *label, int &field, const rapidjson::Value &value) const {
    Require(value.IsInt(), "a member that must be a number");
    field = value.GetInt();
    trace_("%s [%d]\n", label, field);
  }
  void Take(const char *label, std::string &field, const rapidjson::Value &value) const {
    field = Text(value);
    trace_("%s [%s]\n", label, field.c_str());
  }

  void WriteRequest(Writer &writer) const {
    writer.StartObject();
    WriteText(writer, "ver", "1.0");
    WriteText(writer, "type", "PAYMENT");
    WriteText(writer, "requestId", rrn_);
    WriteText(writer, "terminalId", kTerminal);
    WriteText(writer, "requestDate", date_);
    WriteText(writer, "employeeId", kCashier);
    WriteText(writer, "cardNum", kCard);
    writer.Key("isOffline");
    writer.Bool(false);
    WriteText(writer, "shiftId", shift_);
    writer.EndObject();
  }

  void Exchange(const Bill &bill) {
    trace_("TransactionProcess [PAYMENT]\n");
    trace_("TransactionProcessJson\n");
    trace_("Connecting to 127.0.0.1:%d//ws...\n", port_);
    trace_("Connection established!\n");
    trace_("CreateOperationRequest\n");
    rapidjson::StringBuffer body;
    Writer writer(body);
    writer.StartObject();
    writer.Key("putPaymentRequest");
    writer.StartObject();
    writer.Key("request");
    WriteRequest(writer);
    writer.Key("bill");
    WriteBill(writer, bill, true);
    writer.EndObject();
    writer.EndObject();
    trace_(
        "Sending buffer:\nPOST /ws/payment\nHost: 127.0.0.1:%d\n"
        "Content-Type: application/json-soap;charset=UTF-8\nContent-Length: %d\n\n%s\n\n",
        port_, static_cast<int>(body.GetSize()), body.GetString());
    answer_.clear();
    curl_easy_setopt(curl_, CURLOPT_POSTFIELDS, body.GetString());
    curl_easy_setopt(curl_, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.GetSize()));
    curl_easy_setopt(curl_, CURLOPT_WRITEDATA, &answer_);
    Require(curl_easy_perform(curl_) == CURLE_OK, "the exchange");
    trace_("Receiving \n");
    for (size_t at = 0; at < answer_.size(); at += 500) {
      trace_("%.*s\n", static_cast<int>(std::min<size_t>(500, answer_.size() - at)), answer_.data() + at);
    }
  }

  void ReadAnswer(Bill &bill) {
    rapidjson::Document document;
    Require(!document.ParseInsitu(answer_.data()).HasParseError(), "the answer");
    const rapidjson::Value &answer = MemberOf(document, "putPaymentResponse");
    const rapidjson::Value &response = MemberOf(answer, "response");
    Take("response.ver =", MemberOf(response, "ver"));
    Take("response.requestId =", MemberOf(response, "requestId"));
    Take("response.responseId =", MemberOf(response, "responseId"));
    Take("response.responseDate =", MemberOf(response, "responseDate"));
    Take("response.state =", MemberOf(response, "requestState"));
    Take("response.stateCode =", MemberOf(response, "requestStateCode"));
    Take("response.message =", MemberOf(response, "message"));
    const rapidjson::Value &update = MemberOf(response, "isNeedUpdate");
    Require(update.IsBool(), "a member that must be true or false");
    trace_("response.needUpdate = %d\n", update.GetBool() ? 1 : 0);
    Require(Text(MemberOf(response, "requestState")) == "SUCCESS", "the payment");
    paid_rrn_ = Text(MemberOf(response, "requestId"));
    TakeBill(MemberOf(answer, "bill"), bill);
  }

  void Take(const char *label, const rapidjson::Value &value) const {
    Require(value.IsString(), "a member that must be a text");
    trace_("%s %s\n", label, value.GetString());
  }

  // The record and the state in one transaction.
  void Keep(const Bill &bill) {
    rapidjson::StringBuffer record;
    Writer writer(record);
    writer.StartObject();
    writer.Key("request");
    WriteRequest(writer);
    writer.Key("bill");
    WriteBill(writer, bill, true);
    writer.EndObject();
    Step(begin_);
    SetState("reqId", paid_rrn_);
    SetState("update", "0");
    sqlite3_bind_int(trim_, 1, kLogSize);
    Step(trim_);
    sqlite3_bind_text(append_, 1, record.GetString(), static_cast<int>(record.GetSize()), SQLITE_STATIC);
    Step(append_);
    Step(commit_);
  }

  void RewriteBill(const Bill &bill) const {
    trace_("BillModify\n");
    rapidjson::StringBuffer text;
    Writer writer(text);
    WriteBill(writer, bill, true);
    FILE *file = std::fopen((folder_ + bench::kBill).c_str(), "wb");
    Require(file != nullptr && std::fwrite(text.GetString(), 1, text.GetSize(), file) == text.GetSize(),
            "writing the bill");
    std::fclose(file);
  }

  std::string MakeBody(const Bill &bill) const {
    int earned[kAccountCount] = {}, spent[kAccountCount] = {}, fee = 0;
    trace_("CountBonuses\n");
    for (const Good &good : bill.goods) {
      trace_("Good has %d bonuses\n", static_cast<int>(good.bonuses.size()));
      for (const Bonus &bonus : good.bonuses) {
        const int account = AccountNumber(bonus.account);
        earned[account] += bonus.earned;
        spent[account] += bonus.spend;
        fee += bonus.fee;
      }
    }
    trace_("earnedLocal = %d\n", earned[1]);
    trace_("earnedGlobal = %d\n", earned[0]);
    trace_("earnedDiscount = %d\n", earned[2]);
    trace_("spendLocal = %d\n", spent[1]);
    trace_("spendGlobal = %d\n", spent[0]);
    trace_("spendDiscount = %d\n", spent[2]);
    char text[1024];
    std::snprintf(text, sizeof text,
                  "******* ПОКУПКА ********\n"
                  "  Полагающиеся бонусы   \n"
                  "  будут перечислены в   \n"
                  "      Клуб Тавиро       \n"
                  "************************\n"
                  "RRN: %s\n"
                  "Сумма (нал.):\n%24s\n"
                  "Сумма (бнс.):\n%24s\n"
                  "************************\n"
                  "Начислено всего:\n%19s бнс.\n"
                  "Начислено всего\n%s:\n%19s бнс.\n"
                  "Вознаграждение \nорганизатора:\n%19s бнс.\n",
                  paid_rrn_.c_str(), Amount(bill.total - spent[0] - spent[1] - spent[2]).c_str(),
                  Amount(spent[0] + spent[1]).c_str(), Amount(earned[0]).c_str(), kRetailNetwork,
                  Amount(earned[0] + earned[1]).c_str(), Amount(fee).c_str());
    trace_("Bill:\n%s\n", text);
    return text;
  }

  std::string folder_;
  Trace trace_;
  int port_;
  std::string rrn_, paid_rrn_;
  std::string shift_;
  bool shift_is_open_ = false, is_offline_ = false;
  std::string date_;
  std::string answer_;
  sqlite3 *database_ = nullptr;
  sqlite3_stmt *begin_ = nullptr, *commit_ = nullptr, *read_state_ = nullptr, *set_state_ = nullptr,
               *append_ = nullptr, *trim_ = nullptr;
  CURL *curl_ = nullptr;
  curl_slist *headers_ = nullptr;
};

// Makes one payment, and then leaves its trace again and again.
class TraceAlone : public Till {
 public:
  TraceAlone(const std::string &folder, int port)
      : whole_(folder, port, TraceBy::kPosix, Journal::kUnhurried, &lines_),
        trace_(folder + "TRACE.TXT", TraceBy::kPosix) {}

  std::string Pay() override {
    if (lines_.empty()) return whole_.Pay();
    for (const std::string &line : lines_) trace_.Append(line.data(), line.size());
    return "";
  }

  std::string LastRecord() override { return whole_.LastRecord(); }

 private:
  std::vector<std::string> lines_;
  ByHand whole_;
  Trace trace_;
};

}  // namespace

std::unique_ptr<Till> OpenByHand(const std::string &folder, int port, TraceBy trace_by, Journal journal) {
  return std::make_unique<ByHand>(folder, port, trace_by, journal);
}

std::unique_ptr<Till> OpenTraceAlone(const std::string &folder, int port) {
  return std::make_unique<TraceAlone>(folder, port);
}

}  // namespace bench
