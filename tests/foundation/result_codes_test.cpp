// The cashier's message of every result code.
#include "foundation/result_codes.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>

#include "support/folder.h"

namespace {

struct CodeCase {
  int32_t code;
  int name;
  const char *message;
};

// The numbers and texts as they are promised, written by hand: registers and cashiers know them.
const CodeCase kCodeCases[] = {
    {-100, ERR_NO_TRANSACTION, "Транзакция не создана"},
    {-101, ERR_LAST_RRN, "Не удалось получить RRN последней транзакции"},
    {-102, ERR_ACTIVATION_TYPE, "Тип активации указан неверно"},
    {-103, ERR_ACCOUNT_TYPE, "Тип счета указан неверно"},
    {-104, ERR_ORG_FEE_EXCEEDS_BONUS,
     "Процент комиссии организатора превышает процент бонусирования (оффлайн)"},
    {-105, ERR_BILL_OPEN, "Не удалось открыть файл со счетом"},
    {-106, ERR_BILL_FORMAT, "Ошибка в файле со счетом"},
    {-107, ERR_CONFIG_OPEN, "Не удалось открыть файл конфигурации"},
    {-108, ERR_STATE_LOAD, "Не удалось загрузить состояние"},
    {-109, ERR_STATE_CREATE, "Не удалось создать файл состояния"},
    {-110, ERR_STATE_OPEN, "Не удалось открыть файл состояния"},
    {-111, ERR_CONFIG_LOAD, "Не удалось загрузить конфигурацию"},
    {-112, ERR_TRANSACTION_EXISTS, "Транзакция уже создана либо не была закрыта"},
    {-113, ERR_RETURN_LIST_FORMAT, "Ошибка в файле со списком позиций к возврату"},
    {-201, ERR_OFFLINE_SAVE, "Не удалось сохранить оффлайн транзакцию"},
    {-202, ERR_LOG_DELETE, "Не удалось удалить записи лога"},
    {-301, ERR_JSON_DOM_INIT, "Не удалось инициализировать DOM-helper JSON-парсера"},
    {-302, ERR_JSON_PARSER_INIT, "Не удалось инициализировать JSON-парсер"},
    {-303, ERR_JSON_SYNTAX, "Ошибка в файле JSON"},
    {-304, ERR_JSON_INTERNAL, "Внутренняя ошибка при разборе JSON"},
    {-305, ERR_JSON_PRINTER_INIT, "Не удалось инициализировать JSON-принтер"},
    {-306, ERR_JSON_MEMORY, "Ошибка выделения памяти в JSON-парсере"},
    {-307, ERR_JSON_FILE_OPEN, "Не удалось открыть JSON-файл"},
    {-350, ERR_XML_FORMAT, "Ошибка в XML-файле"},
    {-401, ERR_NO_RESPONSE, "Ответ не получен"},
    {-402, ERR_RESPONSE_STRUCTURE, "Ошибка в структуре ответа или записи лога"},
    {-403, ERR_RESPONSE_TYPE, "Тип ответа не поддерживается"},
    {-404, ERR_RESPONSE_CONTENT, "Ошибка в составе ответа"},
    {-405, ERR_SERVER_ERROR, "Ошибка с сервера"},
    {-410, ERR_REQUEST_SEND, "Ошибка при отправке запроса"},
    {-406, ERR_SERVER_REJECTED, "Сервер не смог обработать запрос"},
    {-407, ERR_SERVER_FAILURE, "Сбой на сервере"},
    {-411, ERR_REQUEST_BUILD, "Ошибка при создании запроса"},
    {-501, ERR_CONNECT, "Ошибка соединения с сервером"},
    {-504, ERR_SERVER_ADDRESS, "Неверный адрес сервера"},
    {-505, ERR_SSL_CONNECT, "Ошибка SSL соединения"},
    {-506, ERR_SSL_CONTEXT, "Ошибка инициализации SSL контекста"},
    {-601, ERR_SHIFT_ALREADY_OPEN, "Смена уже открыта"},
    {-602, ERR_SHIFT_NOT_OPEN, "Смена не открыта"},
    {-603, ERR_SHIFT_TRANSACTION_OPEN, "Закрытие смены не возможно, закройте транзакцию"},
    {-701, ERR_REPORT_RANGE, "Неверные границы отчета"},
};

TEST(ErrorMessage, GivesEachCodesOwn) {
  test::Folder folder;
  for (const CodeCase &row : kCodeCases) {
    EXPECT_STREQ(lumo::ErrorMessage(row.code), row.message) << row.code;
    EXPECT_EQ(row.name, row.code);
  }
  EXPECT_EQ(folder.Trace(), "");
}

TEST(ErrorMessage, NoOtherCodeHasOne) {
  test::Folder folder;
  size_t known = 0;
  for (int32_t code = -1100; code <= 1100; ++code) {
    folder.ClearTrace();
    const std::string message = lumo::ErrorMessage(code);
    if (folder.Trace().empty()) {
      ++known;
    } else {
      EXPECT_EQ(message, "Неизвестная ошибка " + std::to_string(code));
    }
  }
  EXPECT_EQ(known, std::size(kCodeCases));
}

struct UnknownCase {
  int32_t code;
  const char *message;
  const char *trace;
};

const UnknownCase kUnknownCases[] = {
    {0, "Неизвестная ошибка 0", "WARNING: Unknown error code 0\n"},
    {5, "Неизвестная ошибка 5", "WARNING: Unknown error code 5\n"},
    {100, "Неизвестная ошибка 100", "WARNING: Unknown error code 100\n"},
    {-114, "Неизвестная ошибка -114", "WARNING: Unknown error code -114\n"},
    {-408, "Неизвестная ошибка -408", "WARNING: Unknown error code -408\n"},
    {INT32_MAX, "Неизвестная ошибка 2147483647", "WARNING: Unknown error code 2147483647\n"},
    {INT32_MIN, "Неизвестная ошибка -2147483648", "WARNING: Unknown error code -2147483648\n"},
};

TEST(ErrorMessage, OfAnUnknownCodeHoldsTheNumberAndLeavesAWarning) {
  test::Folder folder;
  for (const UnknownCase &row : kUnknownCases) {
    folder.ClearTrace();
    EXPECT_STREQ(lumo::ErrorMessage(row.code), row.message);
    EXPECT_EQ(folder.Trace(), row.trace);
  }
}

TEST(ErrorMessage, OfUnknownCodesSharesOneBuffer) {
  test::Folder folder;
  const char *first = lumo::ErrorMessage(INT32_MIN);
  const char *second = lumo::ErrorMessage(5);
  EXPECT_EQ(first, second);
  EXPECT_STREQ(first, "Неизвестная ошибка 5");
}

}  // namespace
