#include "loyalty_server/vocabulary.h"

#include <algorithm>

#include "record/state_codes.h"

namespace loyalty {
namespace {

// The protocol's words; the order is that of Code.
constexpr std::array<const char *, kCodeCount> kCodeNames = {{
#define LUMO_STATE_CODE(name) #name,
    LUMO_STATE_CODES(LUMO_STATE_CODE)
#undef LUMO_STATE_CODE
}};

struct CodeWords {
  Code code;
  const char *message;
};

constexpr std::array<CodeWords, kCodeCount> kCodeMessages = {{
    {Code::kOk, "Операция выполнена"},
    {Code::kInternalError, "Внутренняя ошибка сервера"},
    {Code::kRequestNotFound, "Запрос не найден"},
    {Code::kRequestParsingError, "Запрос не читается"},
    {Code::kUnsupportedProtocolVersion, "Версия протокола не поддерживается"},
    {Code::kIncorrectRequestParam, "Неверный параметр запроса"},
    {Code::kUnknownTerminal, "Терминал не зарегистрирован"},
    {Code::kLockedTerminal, "Терминал заблокирован"},
    {Code::kActivationRequired, "Карта не активирована"},
    {Code::kLockedCard, "Карта заблокирована"},
    {Code::kCardNotFound, "Карта не найдена"},
    {Code::kCardNumberIncorrect, "Неверный номер карты"},
    {Code::kAlreadyActivated, "Карта уже активирована"},
    {Code::kActivationSumTypeRequired, "Не указан счет для зачисления"},
    {Code::kActivationBlockRequired, "Не указаны данные активации"},
    {Code::kReferralNotFound, "Карта пригласившего не найдена"},
    {Code::kReferralLimitReached, "Исчерпано число приглашений"},
    {Code::kIncorrectBill, "Ошибка в счете"},
    {Code::kUnprocessedBill, "Покупка еще не подтверждена"},
    {Code::kBillNotFound, "Покупка не найдена"},
    {Code::kUnknownUser, "Кассир не зарегистрирован"},
    {Code::kIncorrectSum, "Неверная сумма"},
    {Code::kUnknownCashBackType, "Неизвестный вид возврата"},
    {Code::kIncorrectToken, "Неверный код замены карты"},
    {Code::kRetailPointConfigError, "Ошибка в настройках торговой точки"},
    {Code::kRequestIdEmpty, "Не указан номер запроса"},
    {Code::kIncorrectRequestId, "Неверный номер запроса"},
    {Code::kBillIncorrectState, "Операция с этой покупкой невозможна"},
    {Code::kUpdateRequired, "Требуется обновление программы"},
    {Code::kZeroActivationError, "Сумма подарочной карты равна нулю"},
    {Code::kIncorrectRequest, "Неверный запрос"},
    {Code::kDuplicateRequestId, "Запрос с таким номером уже выполнен"},
    {Code::kSmsAuthFailed, "Код из сообщения не подтвержден"},
}};

constexpr bool MessagesAreInOrder() {
  for (size_t i = 0; i < kCodeCount; ++i) {
    if (kCodeMessages[i].code != static_cast<Code>(i)) return false;
  }
  return true;
}
static_assert(MessagesAreInOrder());

constexpr int kDeepest = 100;

bool IsBetween(std::string_view two_digits, int least, int most) {
  const int number = (two_digits[0] - '0') * 10 + (two_digits[1] - '0');
  return number >= least && number <= most;
}

constexpr std::array<const char *, kAccountTypes> kAccounts = {"GLOBAL", "LOCAL", "DISCOUNT"};

std::string Digits(unsigned long long number, size_t width) {
  std::string text = std::to_string(number);
  if (text.size() < width) text.insert(0, width - text.size(), '0');
  return text;
}

}  // namespace

const OperationNames *FindOperation(std::string_view method) {
  for (const OperationNames &names : kOperations) {
    if (method == names.method) return &names;
  }
  return nullptr;
}

const char *CodeName(Code code) {
  return kCodeNames.at(static_cast<size_t>(code));
}

const char *CodeMessage(Code code) {
  return kCodeMessages.at(static_cast<size_t>(code)).message;
}

bool FindCode(std::string_view name, Code *out_code) {
  for (size_t i = 0; i < kCodeNames.size(); ++i) {
    if (name == kCodeNames[i]) {
      *out_code = static_cast<Code>(i);
      return true;
    }
  }
  return false;
}

const char *AccountName(AccountType type) {
  return kAccounts.at(static_cast<size_t>(type));
}

bool FindAccountType(std::string_view name, AccountType *out_type) {
  for (size_t i = 0; i < kAccounts.size(); ++i) {
    if (name == kAccounts[i]) {
      *out_type = static_cast<AccountType>(i);
      return true;
    }
  }
  return false;
}

bool IsRequestId(std::string_view id) {
  return id.size() >= 16 && id.size() <= 20 &&
         std::all_of(id.begin() + 5, id.end(), [](char c) { return c >= '0' && c <= '9'; }) &&
         IsBetween(id.substr(7, 2), 1, 12) && IsBetween(id.substr(9, 2), 1, 31);
}

bool IsNestedTooDeep(std::string_view json) {
  int depth = 0;
  bool is_in_text = false;
  for (size_t i = 0; i < json.size(); ++i) {
    const char c = json[i];
    if (c == '"') is_in_text = !is_in_text;
    if (is_in_text) {
      if (c == '\\') ++i;  // the character behind it does not end the text
    } else if (c == '[' || c == '{') {
      if (++depth > kDeepest) return true;
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return false;
}

std::string AmountText(long long amount) {
  const bool is_negative = amount < 0;
  const unsigned long long size =
      is_negative ? 0ULL - static_cast<unsigned long long>(amount) : static_cast<unsigned long long>(amount);
  return (is_negative ? "-" : "") + std::to_string(size / 100) + "." + Digits(size % 100, 2);
}

std::string DateText(long long unix_seconds) {
  long long days = unix_seconds / 86400;
  long long seconds = unix_seconds % 86400;
  if (seconds < 0) {
    seconds += 86400;
    --days;
  }
  // Years counted from March, so that the leap day is the last of its year.
  const long long shifted = days + 719468;
  const long long era = (shifted >= 0 ? shifted : shifted - 146096) / 146097;
  const long long day_of_era = shifted - era * 146097;
  const long long year_of_era =
      (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
  const long long day_of_year = day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
  const long long month_from_march = (5 * day_of_year + 2) / 153;
  const long long day = day_of_year - (153 * month_from_march + 2) / 5 + 1;
  const long long month = month_from_march < 10 ? month_from_march + 3 : month_from_march - 9;
  const long long year = year_of_era + era * 400 + (month <= 2 ? 1 : 0);
  const auto two = [](long long number) { return Digits(static_cast<unsigned long long>(number), 2); };
  const std::string year_text =
      year < 0 ? std::to_string(year) : Digits(static_cast<unsigned long long>(year), 4);
  return year_text + "-" + two(month) + "-" + two(day) + "T" + two(seconds / 3600) + ":" +
         two(seconds / 60 % 60) + ":" + two(seconds % 60) + "Z";
}

std::string Printable(std::string_view text, size_t limit) {
  std::string out(text.substr(0, limit));
  for (char &c : out) {
    if (static_cast<unsigned char>(c) < 32 || c == 127) c = '?';
  }
  return out;
}

}  // namespace loyalty
