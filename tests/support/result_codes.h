// support/result_codes.h: the result codes and their messages as they are promised, written out by hand:
// registers and cashiers know them. What the library and its exported call are held against.
#pragma once

#include <cstdint>

#include "foundation/result_codes.h"

namespace test {

struct ResultCode {
  int32_t code;
  int name;
  const char *message;
};

constexpr ResultCode kResultCodes[] = {
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
    {-406, ERR_SERVER_REJECTED, "Сервер не смог обработать запрос"},
    {-407, ERR_SERVER_FAILURE, "Сбой на сервере"},
    {-410, ERR_REQUEST_SEND, "Ошибка при отправке запроса"},
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

}  // namespace test
