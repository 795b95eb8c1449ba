// bindings/every_call.cpp: every call once, as C++ sees it; every_call.txt has what it prints.
#include <iostream>
#include <string>
#ifdef _WIN32
#include <windows.h>
#endif

#include "lumo.hpp"

namespace {

void Show(const std::string &name, const std::string &value) {
  std::cout << name << ": " << (value.empty() ? "-" : value) << "\n";
}

void Show(const std::string &name, int value) {
  Show(name, std::to_string(value));
}

void Show(const std::string &name, lumo::Result result) {
  Show(name, result.code());
}

}  // namespace

int main() {
#ifdef _WIN32
  SetConsoleOutputCP(CP_UTF8);
#endif
  Show("lumoVersion", lumo::lumoVersion());
  Show("getTerminalId", lumo::getTerminalId());
  Show("getPingAddress", lumo::getPingAddress());
  Show("GetReportPtr", lumo::GetReportPtr());
  Show("LUMOInitExt", lumo::LUMOInitExt("касса"));
  Show("LUMOInit", lumo::LUMOInit());
  Show("GetErrorMessage", lumo::GetErrorMessage(-501));
  Show("GetErrorMessage", lumo::GetErrorMessage(-7));
  Show("getTerminalId", lumo::getTerminalId());
  Show("getPingAddress", lumo::getPingAddress());
  Show("getPingAddress", lumo::getPingAddress());
  Show("getPingPort", lumo::getPingPort());
  Show("getPingAltAddress", lumo::getPingAltAddress());
  Show("getPingAltPort", lumo::getPingAltPort());
  Show("InitState", lumo::InitState());
  Show("LoadState", lumo::LoadState());
  Show("OpenShift", lumo::OpenShift("Смена"));
  Show("OpenShift", lumo::OpenShift(nullptr));
  Show("setOfflineState", lumo::setOfflineState(1));
  Show("getOfflineState", lumo::getOfflineState());
  Show("setOfflineState", lumo::setOfflineState(0));
  Show("setNeedUpdate", lumo::setNeedUpdate(1));
  Show("getNeedUpdate", lumo::getNeedUpdate());
  Show("setNeedUpdate", lumo::setNeedUpdate(0));
  Show("getRRN", lumo::getRRN());
  Show("getReceiptBody", lumo::getReceiptBody());
  Show("CreateTransaction", lumo::CreateTransaction("8765432187654321", "Кассир"));
  Show("getReceiptHeaderPtr", lumo::getReceiptHeaderPtr());
  Show("CloseTransaction", lumo::CloseTransaction());
  Show("CreateTransaction", lumo::CreateTransaction("1000000003", "Кассир"));
  Show("ActivationProc", lumo::ActivationProc("SIMPLE_ACTIVATION", nullptr, 0, nullptr, nullptr));
  Show("GetActivationAmount", lumo::GetActivationAmount());
  Show("DepositProc", lumo::DepositProc(100000));
  Show("BalanceProc", lumo::BalanceProc());
  Show("GetBalance", lumo::GetBalance());
  Show("CreateAmountBill", lumo::CreateAmountBill(10000, "СЧЁТ.JSN"));
  Show("PaymentProc", lumo::PaymentProc(1, "СЧЁТ.JSN"));
  const std::string first = lumo::getRRN();
  Show("GetEarnBonusAmount", lumo::GetEarnBonusAmount());
  Show("GetSpendBonusAmount", lumo::GetSpendBonusAmount());
  Show("GetDiscountAmount", lumo::GetDiscountAmount());
  Show("PaymentConfirmProc", lumo::PaymentConfirmProc(first));
  Show("CashBackProc", lumo::CashBackProc(first, nullptr));
  Show("GetCashBackResult", lumo::GetCashBackResult());
  Show("PaymentAndConfirmProc", lumo::PaymentAndConfirmProc(0, "СЧЁТ.JSN"));
  Show("PaymentProc", lumo::PaymentProc(0, "нет такого.JSN"));
  Show("PaymentCancelProc", lumo::PaymentCancelProc(first));
  Show("getResponseState", lumo::getResponseState());
  Show("getResponseStateCode", lumo::getResponseStateCode());
  Show("getResponseMessage", lumo::getResponseMessage());
  Show("LinkCardProc", lumo::LinkCardProc("1000000008"));
  Show("ExchangeProc", lumo::ExchangeProc("TOKEN7"));
  Show("lumoIsOffline", lumo::lumoIsOffline());
  const std::string header = lumo::getReceiptHeaderPtr();
  const std::string body = lumo::getReceiptBodyPtr();
  const std::string footer = lumo::getReceiptFooterPtr();
  Show("getReceiptBody is getReceiptBodyPtr", lumo::getReceiptBody() == body);
  Show("CloseTransaction", lumo::CloseTransaction());
  Show("getReceiptBodyPtr", lumo::getReceiptBodyPtr());
  Show("first RRN", first);
  Show("slip", "\n" + header + body + footer);
  Show("SendOfflinePayments", lumo::SendOfflinePayments());
  Show("lumoOfflineCount", lumo::lumoOfflineCount());
  Show("lumoClearOffline", lumo::lumoClearOffline(5));
  Show("lumoClearOffline", lumo::lumoClearOffline(0));
  Show("GenerateSummaryReport", lumo::GenerateSummaryReport("9", "0"));
  Show("GenerateReport", lumo::GenerateReport("0", "9") > 0);
  const std::string detailed = lumo::GetReportPtr();
  Show("GenerateSummaryReport", lumo::GenerateSummaryReport("0", "9") > 0);
  Show("the reports differ", lumo::GetReportPtr() != detailed);
  Show("GetReportPtr", "\n" + lumo::GetReportPtr());
  Show("RunUpdater", lumo::RunUpdater("пакет"));
  Show("CommitUpdates", lumo::CommitUpdates());
  Show("CloseShift", lumo::CloseShift());
  Show("OpenShift", lumo::OpenShift(nullptr));
  Show("DllAttach", lumo::DllAttach(nullptr));
  Show("LUMOClean", lumo::LUMOClean());
}
