// protocol/full_record.h: a record with every block filled, and its parts as they are to be written.
#pragma once

#include <cstdio>
#include <string>

#include "record/enumerations.h"
#include "record/transaction.h"

#define FULL_ACTIVATION                                                         \
  "{\"activationType\":\"REFER_A_FRIEND\",\"amount\":15000,\"type\":\"LOCAL\"," \
  "\"referParentCardNum\":\"7770002\"}"

#define FULL_ACTIVATION_RESULT                                                   \
  "{\"activationSum\":100,\"activationSumType\":\"GLOBAL\",\"referralSum\":200," \
  "\"referralSumType\":\"LOCAL\",\"giftSum\":300,\"giftSumType\":\"DISCOUNT\"}"

#define FULL_BILL                                                                                     \
  "{\"totalSum\":10000,\"spendBonus\":true,\"orderLen\":2,\"billNum\":\"B-1\","                       \
  "\"billDate\":\"2012-12-05T09:59:00Z\",\"partnerFee\":250,\"goodList\":{\"good\":["                 \
  "{\"title\":\"Чай \\\"Дарджилинг\\\"\",\"productCode\":\"008\",\"positionCost\":7500," \
  "\"orderNum\":1,\"cnt\":3,\"bonus\":["                                                              \
  "{\"earned\":225,\"spend\":10,\"organizerFee\":5,\"accountType\":\"GLOBAL\"},"                      \
  "{\"earned\":75,\"spend\":0,\"organizerFee\":1,\"accountType\":\"LOCAL\"}]},"                       \
  "{\"title\":\"C:\\\\cups\",\"productCode\":\"009\",\"positionCost\":2500,\"orderNum\":2,\"cnt\":1}]}}"

inline std::string FullRequest(const std::string &type, const std::string &is_offline) {
  return "{\"ver\":\"1.2\",\"type\":\"" + type +
         "\",\"requestId\":\"T000112120500001\",\"terminalId\":\"T0001\","
         "\"requestDate\":\"2012-12-05T10:00:00Z\",\"employeeId\":\"cashier 7\",\"cardNum\":\"7770001\","
         "\"isOffline\":" +
         is_offline + ",\"shiftId\":\"shift 3\"}";
}

inline void FillRecord(lumo::Transaction *record) {
  const auto store = [record](const char **field, const char *text) {
    lumo::TransactionCopyText(record, field, text);
  };
  lumo::RequestBlock &request = record->request;
  store(&request.ver, "1.2");
  store(&request.terminalId, "T0001");
  store(&request.employeeId, "cashier 7");
  store(&request.cardNum, "7770001");
  store(&request.shiftId, "shift 3");
  store(&request.requestId, "T000112120500001");
  std::snprintf(request.requestDate, sizeof request.requestDate, "2012-12-05T10:00:00Z");

  record->activation.activationType = lumo::ACTIVATION_REFER_A_FRIEND;
  record->activation.amount = 15000;
  record->activation.type = lumo::ACCOUNT_LOCAL;
  store(&record->activation.referParentCardNum, "7770002");
  record->activationResult = {100, lumo::ACCOUNT_GLOBAL,  200, lumo::ACCOUNT_LOCAL,
                              300, lumo::ACCOUNT_DISCOUNT};

  lumo::BillBlock &bill = record->bill;
  bill.totalSum = 10000;
  bill.spendAmount = 5000;
  bill.orderLen = 2;
  store(&bill.billNum, "B-1");
  std::snprintf(bill.billDate, sizeof bill.billDate, "2012-12-05T09:59:00Z");
  bill.partnerFee = 250;
  bill.goodCount = 2;
  bill.goods = static_cast<lumo::Good *>(lumo::TransactionAllocate(record, sizeof(lumo::Good) * 2));
  lumo::Good &tea = bill.goods[0];
  store(&tea.title, "Чай \"Дарджилинг\"");
  store(&tea.productCode, "008");
  tea.positionCost = 7500;
  tea.orderNum = 1;
  tea.cnt = 3;
  tea.bonusCount = 2;
  tea.bonuses = static_cast<lumo::Bonus *>(lumo::TransactionAllocate(record, sizeof(lumo::Bonus) * 2));
  tea.bonuses[0] = {10, 225, 5, lumo::ACCOUNT_GLOBAL};
  tea.bonuses[1] = {0, 75, 1, lumo::ACCOUNT_LOCAL};
  lumo::Good &cups = bill.goods[1];
  store(&cups.title, "C:\\cups");
  store(&cups.productCode, "009");
  cups.positionCost = 2500;
  cups.orderNum = 2;
  cups.cnt = 1;

  store(&record->paymentConfirm.requestId, "T000112120400009");
  record->paymentConfirm.isConfirm = 1;
  record->depositAmount = 7500;
  record->cashBack.cashBackType = lumo::CASHBACK_SEQ;
  store(&record->cashBack.requestId, "T000112120400008");
  record->cashBack.goodCount = 2;
  record->cashBack.goods =
      static_cast<lumo::CashBackGood *>(lumo::TransactionAllocate(record, sizeof(lumo::CashBackGood) * 2));
  record->cashBack.goods[0] = {1, 1250, 2};
  record->cashBack.goods[1] = {3, -5, 1};
  store(&record->linkedCardNum, "7770003");
  store(&record->exchangeToken, "tok-9");
}
