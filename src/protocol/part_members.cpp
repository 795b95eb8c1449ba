#include "protocol/part_members.h"

namespace lumo {

constexpr Member<RequestBlock> kRequestMembers[] = {
    {"ver", "request.ver", &RequestBlock::ver},
    {"type", "request.type", &RequestBlock::type},
    {"requestId", "request.requestId", &RequestBlock::requestId},
    {"terminalId", "request.terminalId", &RequestBlock::terminalId},
    {"requestDate", "request.requestDate", &RequestBlock::requestDate},
    {"employeeId", "request.employeeId", &RequestBlock::employeeId},
    {"cardNum", "request.cardNum", &RequestBlock::cardNum},
    {"isOffline", "request.offline", &RequestBlock::isOffline},
    {"shiftId", "request.shiftId", &RequestBlock::shiftId}};

constexpr Member<ResponseBlock> kResponseMembers[] = {
    {"ver", "response.ver", &ResponseBlock::ver},
    {"requestId", "response.requestId", &ResponseBlock::requestId},
    {"responseId", "response.responseId", &ResponseBlock::responseId},
    {"responseDate", "response.responseDate", &ResponseBlock::responseDate},
    {"requestState", "response.state", &ResponseBlock::requestState},
    {"requestStateCode", "response.stateCode", &ResponseBlock::requestStateCode},
    {"message", "response.message", &ResponseBlock::message},
    {"isNeedUpdate", "response.needUpdate", &ResponseBlock::isNeedUpdate}};

constexpr Member<BillBlock> kBillMembers[] = {
    {"totalSum", " totalSum", &BillBlock::totalSum},
    Member<BillBlock>::WrittenFlag("spendBonus", &BillBlock::spendAmount),
    {"orderLen", " orderLen", &BillBlock::orderLen},
    {"billNum", " billNum", &BillBlock::billNum},
    {"billDate", " billDate", &BillBlock::billDate},
    {"partnerFee", " partnerFee", &BillBlock::partnerFee}};

constexpr Member<Good> kGoodMembers[] = {{"title", " title", &Good::title},
                                         {"productCode", " productCode", &Good::productCode},
                                         {"positionCost", " positionCost", &Good::positionCost},
                                         {"orderNum", " orderNum", &Good::orderNum},
                                         {"cnt", " cnt", &Good::cnt}};

constexpr Member<Bonus> kBonusMembers[] = {{"earned", "  earned", &Bonus::earned},
                                           {"spend", "  spend", &Bonus::spend},
                                           {"organizerFee", "  organizerFee", &Bonus::organizerFee},
                                           {"accountType", "  accountType", &Bonus::accountType}};

constexpr Member<PaymentConfirmBlock> kPaymentConfirmMembers[] = {
    {"requestId", "confirm.requestId", &PaymentConfirmBlock::requestId},
    {"isConfirm", "confirm.isConfirm", &PaymentConfirmBlock::isConfirm}};

constexpr Member<BalanceAccount> kAccountMembers[] = {
    {"accountType", "balance.account", &BalanceAccount::accountType},
    {"availableAmount", "balance.availableAmount", &BalanceAccount::availableAmount},
    {"amount", "balance.amount", &BalanceAccount::amount}};

// Read in this order; WriteCashBackPart writes requestId first.
constexpr Member<CashBackBlock> kCashBackMembers[] = {
    {"cashBackType", "cashback.cashBackType", &CashBackBlock::cashBackType},
    {"requestId", "cashback.requestId", &CashBackBlock::requestId}};

// Note: sum and cnt bear another part's label.
constexpr Member<CashBackGood> kCashBackGoodMembers[] = {{"pos", "cbgood.pos", &CashBackGood::pos},
                                                         {"sum", "activation.sum", &CashBackGood::sum},
                                                         {"cnt", "activation.cnt", &CashBackGood::cnt}};

constexpr Member<Transaction> kCashBackResultMembers[] = {
    {"returnedSum", "cashbackResult.returnedSum", &Transaction::returnedSum}};

constexpr Member<Transaction> kLinkedCardMembers[] = {
    {"linkedCardNum", nullptr, &Transaction::linkedCardNum}};

constexpr Member<ActivationBlock> kActivationMembers[] = {
    {"activationType", "activation.activationType", &ActivationBlock::activationType},
    {"amount", "activation.amount", &ActivationBlock::amount},
    {"type", "activation.accountType", &ActivationBlock::type},
    Member<ActivationBlock>::Optional("referParentCardNum", "activation.referParentCardNum",
                                      &ActivationBlock::referParentCardNum)};

constexpr Member<ActivationResultBlock> kActivationResultMembers[] = {
    {"activationSum", "activationResult.activationSum", &ActivationResultBlock::activationSum},
    {"activationSumType", "activationResult.activationSumType", &ActivationResultBlock::activationSumType},
    {"referralSum", "activationResult.referralSum", &ActivationResultBlock::referralSum},
    {"referralSumType", "activationResult.referralSumType", &ActivationResultBlock::referralSumType},
    {"giftSum", "activationResult.giftSum", &ActivationResultBlock::giftSum},
    {"giftSumType", "activationResult.giftSumType", &ActivationResultBlock::giftSumType}};

constexpr Member<Transaction> kDepositMembers[] = {{"amount", "deposit.amount", &Transaction::depositAmount}};

constexpr Member<Transaction> kCardExchangeMembers[] = {
    {"token", "exchange.token", &Transaction::exchangeToken}};

constexpr Member<Transaction> kLastRrnMembers[] = {{"rrNumber", "last_rrn.last_rrn", &Transaction::rrNumber}};

constexpr Member<Transaction> kAdvertisingMembers[] = {{"text", "ad.ad", &Transaction::adText}};

}  // namespace lumo
