#include "loyalty_server/vocabulary.h"

namespace loyalty {
namespace {

struct CodeWords {
  const char *name;
  const char *message;
};

constexpr std::array<CodeWords, kCodeCount> kCodes = {{
    {"OK", "Операция выполнена"},
    {"INTERNAL_ERROR", "Внутренняя ошибка сервера"},
    {"REQUEST_NOT_FOUND", "Запрос не найден"},
    {"REQUEST_PARSING_ERROR", "Запрос не читается"},
    {"UNSUPPORTED_PROTOCOL_VERSION", "Версия протокола не поддерживается"},
    {"INCORRECT_REQUEST_PARAM", "Неверный параметр запроса"},
    {"UNKNOWN_TERMINAL", "Терминал не зарегистрирован"},
    {"LOCKED_TERMINAL", "Терминал заблокирован"},
    {"ACTIVATION_REQUIRED", "Карта не активирована"},
    {"LOCKED_CARD", "Карта заблокирована"},
    {"CARD_NOT_FOUND", "Карта не найдена"},
    {"CARD_NUMBER_INCORRECT", "Неверный номер карты"},
    {"ALREADY_ACTIVATED", "Карта уже активирована"},
    {"ACTIVATION_SUM_TYPE_REQUIRED", "Не указан счет для зачисления"},
    {"ACTIVATION_BLOCK_REQUIRED", "Не указаны данные активации"},
    {"REFERRAL_NOT_FOUND", "Карта пригласившего не найдена"},
    {"REFERRAL_LIMIT_REACHED", "Исчерпано число приглашений"},
    {"INCORRECT_BILL", "Ошибка в счете"},
    {"UNPROCESSED_BILL", "Покупка еще не подтверждена"},
    {"BILL_NOT_FOUND", "Покупка не найдена"},
    {"UNKNOWN_USER", "Кассир не зарегистрирован"},
    {"INCORRECT_SUM", "Неверная сумма"},
    {"UNKNOWN_CASH_BACK_TYPE", "Неизвестный вид возврата"},
    {"INCORRECT_TOKEN", "Неверный код замены карты"},
    {"RETAIL_POINT_CONFIG_ERROR", "Ошибка в настройках торговой точки"},
    {"REQUEST_ID_EMPTY", "Не указан номер запроса"},
    {"INCORRECT_REQUEST_ID", "Неверный номер запроса"},
    {"BILL_INCORRECT_STATE", "Операция с этой покупкой невозможна"},
    {"UPDATE_REQUIRED", "Требуется обновление программы"},
    {"ZERO_ACTIVATION_ERROR", "Сумма подарочной карты равна нулю"},
    {"INCORRECT_REQUEST", "Неверный запрос"},
    {"DUPLICATE_REQUEST_ID", "Запрос с таким номером уже выполнен"},
    {"SMS_AUTH_FAILED", "Код из сообщения не подтвержден"},
}};

constexpr std::array<const char *, kAccountTypes> kAccounts = {"GLOBAL", "LOCAL", "DISCOUNT"};

std::string Digits(unsigned long long number, std::size_t width) {
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
  return kCodes.at(static_cast<std::size_t>(code)).name;
}

const char *CodeMessage(Code code) {
  return kCodes.at(static_cast<std::size_t>(code)).message;
}

bool FindCode(std::string_view name, Code *out_code) {
  for (std::size_t i = 0; i < kCodes.size(); ++i) {
    if (name == kCodes[i].name) {
      *out_code = static_cast<Code>(i);
      return true;
    }
  }
  return false;
}

const char *AccountName(AccountType type) {
  return kAccounts.at(static_cast<std::size_t>(type));
}

bool FindAccountType(std::string_view name, AccountType *out_type) {
  for (std::size_t i = 0; i < kAccounts.size(); ++i) {
    if (name == kAccounts[i]) {
      *out_type = static_cast<AccountType>(i);
      return true;
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

std::string Printable(std::string_view text, std::size_t limit) {
  std::string out(text.substr(0, limit));
  for (char &c : out) {
    if (static_cast<unsigned char>(c) < 32 || c == 127) c = '?';
  }
  return out;
}

}  // namespace loyalty
