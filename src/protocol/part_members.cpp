#include "protocol/part_members.h"

namespace lumo {

constexpr Part<RequestBlock, 9> kRequestMembers = {
    PartStyle::kPart,
    {{"ver", "request.ver", &RequestBlock::ver},
     {"type", "request.type", &RequestBlock::type},
     {"requestId", "request.requestId", &RequestBlock::requestId},
     {"terminalId", "request.terminalId", &RequestBlock::terminalId},
     {"requestDate", "request.requestDate", &RequestBlock::requestDate},
     {"employeeId", "request.employeeId", &RequestBlock::employeeId},
     {"cardNum", "request.cardNum", &RequestBlock::cardNum},
     {"isOffline", "request.offline", &RequestBlock::isOffline},
     {"shiftId", "request.shiftId", &RequestBlock::shiftId}}};

constexpr Part<ResponseBlock, 8> kResponseMembers = {
    PartStyle::kPart,
    {{"ver", "response.ver", &ResponseBlock::ver},
     {"requestId", "response.requestId", &ResponseBlock::requestId},
     {"responseId", "response.responseId", &ResponseBlock::responseId},
     {"responseDate", "response.responseDate", &ResponseBlock::responseDate},
     {"requestState", "response.state", &ResponseBlock::requestState},
     {"requestStateCode", "response.stateCode", &ResponseBlock::requestStateCode},
     {"message", "response.message", &ResponseBlock::message},
     {"isNeedUpdate", "response.needUpdate", &ResponseBlock::isNeedUpdate}}};

constexpr Part<BillBlock, 6> kBillMembers = {
    PartStyle::kBill,
    {{"totalSum", " totalSum", &BillBlock::totalSum},
     Member<BillBlock>::WrittenFlag("spendBonus", &BillBlock::spendAmount),
     {"orderLen", " orderLen", &BillBlock::orderLen},
     {"billNum", " billNum", &BillBlock::billNum},
     {"billDate", " billDate", &BillBlock::billDate},
     {"partnerFee", " partnerFee", &BillBlock::partnerFee}}};

constexpr Part<Good, 5> kGoodMembers = {PartStyle::kGood,
                                        {{"title", " title", &Good::title},
                                         {"productCode", " productCode", &Good::productCode},
                                         {"positionCost", " positionCost", &Good::positionCost},
                                         {"orderNum", " orderNum", &Good::orderNum},
                                         {"cnt", " cnt", &Good::cnt}}};

constexpr Part<Bonus, 4> kBonusMembers = {PartStyle::kBonus,
                                          {{"earned", "  earned", &Bonus::earned},
                                           {"spend", "  spend", &Bonus::spend},
                                           {"organizerFee", "  organizerFee", &Bonus::organizerFee},
                                           {"accountType", "  accountType", &Bonus::accountType}}};

constexpr Part<PaymentConfirmBlock, 2> kPaymentConfirmMembers = {
    PartStyle::kPart,
    {{"requestId", "confirm.requestId", &PaymentConfirmBlock::requestId},
     {"isConfirm", "confirm.isConfirm", &PaymentConfirmBlock::isConfirm}}};

constexpr Part<BalanceAccount, 3> kAccountMembers = {
    PartStyle::kPart,
    {{"accountType", "balance.account", &BalanceAccount::accountType},
     {"availableAmount", "balance.availableAmount", &BalanceAccount::availableAmount},
     {"amount", "balance.amount", &BalanceAccount::amount}}};

// Written in the other order.
constexpr Part<CashBackBlock, 2> kCashBackMembers = {
    PartStyle::kPart,
    {{"cashBackType", "cashback.cashBackType", &CashBackBlock::cashBackType},
     {"requestId", "cashback.requestId", &CashBackBlock::requestId}}};

// Deliberate: sum and cnt bear another part's label.
constexpr Part<CashBackGood, 3> kCashBackGoodMembers = {PartStyle::kPart,
                                                        {{"pos", "cbgood.pos", &CashBackGood::pos},
                                                         {"sum", "activation.sum", &CashBackGood::sum},
                                                         {"cnt", "activation.cnt", &CashBackGood::cnt}}};

constexpr Part<Transaction, 1> kCashBackResultMembers = {
    PartStyle::kPart, {{"returnedSum", "cashbackResult.returnedSum", &Transaction::returnedSum}}};

constexpr Part<Transaction, 1> kLinkedCardMembers = {
    PartStyle::kPart, {{"linkedCardNum", nullptr, &Transaction::linkedCardNum}}};

constexpr Part<ActivationBlock, 4> kActivationMembers = {
    PartStyle::kPart,
    {{"activationType", "activation.activationType", &ActivationBlock::activationType},
     {"amount", "activation.amount", &ActivationBlock::amount},
     {"type", "activation.accountType", &ActivationBlock::type},
     Member<ActivationBlock>::Optional("referParentCardNum", "activation.referParentCardNum",
                                       &ActivationBlock::referParentCardNum)}};

constexpr Part<ActivationResultBlock, 6> kActivationResultMembers = {
    PartStyle::kPart,
    {{"activationSum", "activationResult.activationSum", &ActivationResultBlock::activationSum},
     {"activationSumType", "activationResult.activationSumType", &ActivationResultBlock::activationSumType},
     {"referralSum", "activationResult.referralSum", &ActivationResultBlock::referralSum},
     {"referralSumType", "activationResult.referralSumType", &ActivationResultBlock::referralSumType},
     {"giftSum", "activationResult.giftSum", &ActivationResultBlock::giftSum},
     {"giftSumType", "activationResult.giftSumType", &ActivationResultBlock::giftSumType}}};

constexpr Part<Transaction, 1> kDepositMembers = {
    PartStyle::kPart, {{"amount", "deposit.amount", &Transaction::depositAmount}}};

constexpr Part<Transaction, 1> kCardExchangeMembers = {
    PartStyle::kPart, {{"token", "exchange.token", &Transaction::exchangeToken}}};

constexpr Part<Transaction, 1> kLastRrnMembers = {
    PartStyle::kPart, {{"rrNumber", "last_rrn.last_rrn", &Transaction::rrNumber}}};

constexpr Part<Transaction, 1> kAdvertisingMembers = {PartStyle::kPart,
                                                      {{"text", "ad.ad", &Transaction::adText}}};

}  // namespace lumo
