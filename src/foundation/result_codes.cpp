#include "foundation/result_codes.h"

#include "foundation/format.h"
#include "foundation/trace.h"

namespace lumo {
namespace {

struct CodeMessage {
  int32_t code;
  const char *message;
};

constexpr CodeMessage kMessages[] = {
    {ERR_NO_TRANSACTION, "Транзакция не создана"},
    {ERR_LAST_RRN, "Не удалось получить RRN последней транзакции"},
    {ERR_ACTIVATION_TYPE, "Тип активации указан неверно"},
    {ERR_ACCOUNT_TYPE, "Тип счета указан неверно"},
    {ERR_ORG_FEE_EXCEEDS_BONUS, "Процент комиссии организатора превышает процент бонусирования (оффлайн)"},
    {ERR_BILL_OPEN, "Не удалось открыть файл со счетом"},
    {ERR_BILL_FORMAT, "Ошибка в файле со счетом"},
    {ERR_CONFIG_OPEN, "Не удалось открыть файл конфигурации"},
    {ERR_STATE_LOAD, "Не удалось загрузить состояние"},
    {ERR_STATE_CREATE, "Не удалось создать файл состояния"},
    {ERR_STATE_OPEN, "Не удалось открыть файл состояния"},
    {ERR_CONFIG_LOAD, "Не удалось загрузить конфигурацию"},
    {ERR_TRANSACTION_EXISTS, "Транзакция уже создана либо не была закрыта"},
    {ERR_RETURN_LIST_FORMAT, "Ошибка в файле со списком позиций к возврату"},
    {ERR_OFFLINE_SAVE, "Не удалось сохранить оффлайн транзакцию"},
    {ERR_LOG_DELETE, "Не удалось удалить записи лога"},
    {ERR_JSON_DOM_INIT, "Не удалось инициализировать DOM-helper JSON-парсера"},
    {ERR_JSON_PARSER_INIT, "Не удалось инициализировать JSON-парсер"},
    {ERR_JSON_SYNTAX, "Ошибка в файле JSON"},
    {ERR_JSON_INTERNAL, "Внутренняя ошибка при разборе JSON"},
    {ERR_JSON_PRINTER_INIT, "Не удалось инициализировать JSON-принтер"},
    {ERR_JSON_MEMORY, "Ошибка выделения памяти в JSON-парсере"},
    {ERR_JSON_FILE_OPEN, "Не удалось открыть JSON-файл"},
    {ERR_XML_FORMAT, "Ошибка в XML-файле"},
    {ERR_NO_RESPONSE, "Ответ не получен"},
    {ERR_RESPONSE_STRUCTURE, "Ошибка в структуре ответа или записи лога"},
    {ERR_RESPONSE_TYPE, "Тип ответа не поддерживается"},
    {ERR_RESPONSE_CONTENT, "Ошибка в составе ответа"},
    {ERR_SERVER_ERROR, "Ошибка с сервера"},
    {ERR_REQUEST_SEND, "Ошибка при отправке запроса"},
    {ERR_SERVER_REJECTED, "Сервер не смог обработать запрос"},
    {ERR_SERVER_FAILURE, "Сбой на сервере"},
    {ERR_REQUEST_BUILD, "Ошибка при создании запроса"},
    {ERR_CONNECT, "Ошибка соединения с сервером"},
    {ERR_SERVER_ADDRESS, "Неверный адрес сервера"},
    {ERR_SSL_CONNECT, "Ошибка SSL соединения"},
    {ERR_SSL_CONTEXT, "Ошибка инициализации SSL контекста"},
    {ERR_SHIFT_ALREADY_OPEN, "Смена уже открыта"},
    {ERR_SHIFT_NOT_OPEN, "Смена не открыта"},
    {ERR_SHIFT_TRANSACTION_OPEN, "Закрытие смены не возможно, закройте транзакцию"},
    {ERR_REPORT_RANGE, "Неверные границы отчета"},
    {0, nullptr},
};

char error_text[100];

}  // namespace

const char *ErrorMessage(int32_t code) {
  const CodeMessage *row = kMessages;
  for (; row->code != 0; ++row) {
    if (row->code == code) {
      return row->message;
    }
  }
  TraceWarning("Unknown error code %d\n", code);
  Format(error_text, sizeof error_text, "Неизвестная ошибка %d", code);
  return error_text;
}

}  // namespace lumo
