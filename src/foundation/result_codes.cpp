#include "foundation/result_codes.h"

#include "foundation/format.h"
#include "foundation/trace.h"

namespace lumo {
namespace {

// The compiler refuses a code of lumo.h that has no message here, and a message without a code.
const char *MessageOf(LumoResult code) {
  switch (code) {
    case ERR_NO_TRANSACTION:
      return "Транзакция не создана";
    case ERR_LAST_RRN:
      return "Не удалось получить RRN последней транзакции";
    case ERR_ACTIVATION_TYPE:
      return "Тип активации указан неверно";
    case ERR_ACCOUNT_TYPE:
      return "Тип счета указан неверно";
    case ERR_ORG_FEE_EXCEEDS_BONUS:
      return "Процент комиссии организатора превышает процент бонусирования (оффлайн)";
    case ERR_BILL_OPEN:
      return "Не удалось открыть файл со счетом";
    case ERR_BILL_FORMAT:
      return "Ошибка в файле со счетом";
    case ERR_CONFIG_OPEN:
      return "Не удалось открыть файл конфигурации";
    case ERR_STATE_LOAD:
      return "Не удалось загрузить состояние";
    case ERR_STATE_CREATE:
      return "Не удалось создать файл состояния";
    case ERR_STATE_OPEN:
      return "Не удалось открыть файл состояния";
    case ERR_CONFIG_LOAD:
      return "Не удалось загрузить конфигурацию";
    case ERR_TRANSACTION_EXISTS:
      return "Транзакция уже создана либо не была закрыта";
    case ERR_RETURN_LIST_FORMAT:
      return "Ошибка в файле со списком позиций к возврату";
    case ERR_OFFLINE_SAVE:
      return "Не удалось сохранить оффлайн транзакцию";
    case ERR_LOG_DELETE:
      return "Не удалось удалить записи лога";
    case ERR_JSON_DOM_INIT:
      return "Не удалось инициализировать DOM-helper JSON-парсера";
    case ERR_JSON_PARSER_INIT:
      return "Не удалось инициализировать JSON-парсер";
    case ERR_JSON_SYNTAX:
      return "Ошибка в файле JSON";
    case ERR_JSON_INTERNAL:
      return "Внутренняя ошибка при разборе JSON";
    case ERR_JSON_PRINTER_INIT:
      return "Не удалось инициализировать JSON-принтер";
    case ERR_JSON_MEMORY:
      return "Ошибка выделения памяти в JSON-парсере";
    case ERR_JSON_FILE_OPEN:
      return "Не удалось открыть JSON-файл";
    case ERR_XML_FORMAT:
      return "Ошибка в XML-файле";
    case ERR_NO_RESPONSE:
      return "Ответ не получен";
    case ERR_RESPONSE_STRUCTURE:
      return "Ошибка в структуре ответа или записи лога";
    case ERR_RESPONSE_TYPE:
      return "Тип ответа не поддерживается";
    case ERR_RESPONSE_CONTENT:
      return "Ошибка в составе ответа";
    case ERR_SERVER_ERROR:
      return "Ошибка с сервера";
    case ERR_REQUEST_SEND:
      return "Ошибка при отправке запроса";
    case ERR_SERVER_REJECTED:
      return "Сервер не смог обработать запрос";
    case ERR_SERVER_FAILURE:
      return "Сбой на сервере";
    case ERR_REQUEST_BUILD:
      return "Ошибка при создании запроса";
    case ERR_CONNECT:
      return "Ошибка соединения с сервером";
    case ERR_SERVER_ADDRESS:
      return "Неверный адрес сервера";
    case ERR_SSL_CONNECT:
      return "Ошибка SSL соединения";
    case ERR_SSL_CONTEXT:
      return "Ошибка инициализации SSL контекста";
    case ERR_SHIFT_ALREADY_OPEN:
      return "Смена уже открыта";
    case ERR_SHIFT_NOT_OPEN:
      return "Смена не открыта";
    case ERR_SHIFT_TRANSACTION_OPEN:
      return "Закрытие смены не возможно, закройте транзакцию";
    case ERR_REPORT_RANGE:
      return "Неверные границы отчета";
  }
  return nullptr;
}

constexpr int32_t kLowestCode = ERR_REPORT_RANGE;

char error_text[100];

}  // namespace

const char *ErrorMessage(int32_t code) {
  const bool may_be_known = code >= kLowestCode && code < 0;
  const char *message = may_be_known ? MessageOf(static_cast<LumoResult>(code)) : nullptr;
  if (message != nullptr) return message;
  TraceWarning("Unknown error code %d\n", code);
  Format(error_text, sizeof error_text, "Неизвестная ошибка %d", code);
  return error_text;
}

}  // namespace lumo
