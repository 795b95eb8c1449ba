#include "engine/reports.h"

#include <cstring>

#include "engine/offline_payment.h"
#include "engine/payment_stack.h"
#include "foundation/arithmetic.h"
#include "foundation/debug_check.h"
#include "foundation/format.h"
#include "foundation/result_codes.h"
#include "foundation/trace.h"
#include "journal/logger.h"
#include "protocol/journal_record.h"
#include "record/enumerations.h"
#include "record/receipt.h"
#include "record/transaction.h"

namespace lumo {
namespace {

ReceiptBuffer *report_buffer = nullptr;  // null before the first report

struct PaymentTotals {
  int32_t count;
  int32_t earned;
  int32_t spent;
  int32_t discount;
};

struct AmountTotals {
  int32_t count;
  int32_t sum;
};

struct Summary {
  PaymentTotals confirmed;
  PaymentTotals canceled;
  PaymentTotals unanswered;
  AmountTotals giftCards;
  AmountTotals referrals;
  AmountTotals activations;
  AmountTotals deposits;
  AmountTotals refunds;
  PaymentStack payments;  // their states are known at the end of the log
};

struct PaymentAmounts {
  int32_t earned;
  int32_t spent;
  int32_t discount;
};

bool IsRange(const char *from, const char *to) {
  return std::strcmp(TextOrEmpty(from), TextOrEmpty(to)) < 0;
}

// Both ends are left out.
bool IsWithin(const char *date, const char *from, const char *to) {
  return std::strcmp(TextOrEmpty(from), date) < 0 && std::strcmp(date, TextOrEmpty(to)) < 0;
}

void ReplaceReport() {
  if (report_buffer != nullptr) {
    TraceError("Previous report resources not free. Deleting.\n");
    ReceiptFree(report_buffer);
  }
  report_buffer = ReceiptCreate();
}

int ReportLength() {
  return static_cast<int>(ReceiptGetLength(report_buffer));
}

// False for a record that cannot be read and for one outside of the range.
bool LoadWithin(Transaction *record, const char *text, const char *from, const char *to) {
  const int result = LoadLogRecord(record, text);
  if (result != 0) {
    TraceError("LoadLogRecord returned %d\n", result);
    return false;
  }
  return IsWithin(record->request.requestDate, from, to);
}

// Calls `visit` with each record of the range, in the log's order. Only one is in memory at a time.
template <typename Visit>
void VisitRecords(RecordEntry *records, const char *from, const char *to, Visit visit) {
  for (RecordEntry *entry = records; entry != nullptr; entry = NextLogRecord(entry)) {
    const ScopedTransaction record(TransactionCreate());
    if (LoadWithin(record.get(), entry->text, from, to)) visit(record.get());
  }
}

PaymentAmounts CountPayment(const Transaction *record) {
  BonusTotals totals = {};
  CountBonuses(record, &totals);
  return PaymentAmounts{WrapAdd(totals.earnedGlobal, totals.earnedLocal),
                        WrapAdd(totals.spendGlobal, totals.spendLocal), totals.spendDiscount};
}

void AddAmount(AmountTotals *totals, int32_t amount) {
  ++totals->count;
  totals->sum = WrapAdd(totals->sum, amount);
}

void AddPayment(PaymentTotals *totals, const PaymentStackItem &payment) {
  ++totals->count;
  totals->earned = WrapAdd(totals->earned, payment.earned);
  totals->spent = WrapAdd(totals->spent, payment.spent);
  totals->discount = WrapAdd(totals->discount, payment.discount);
}

void SumActivation(const Transaction *record, Summary *summary) {
  switch (record->activation.activationType) {
    case ACTIVATION_SIMPLE:
      AddAmount(&summary->activations, record->activation.amount);
      break;
    case ACTIVATION_GIFT_CARD:
      AddAmount(&summary->giftCards, record->activation.amount);
      break;
    case ACTIVATION_REFER_A_FRIEND:
      AddAmount(&summary->referrals, record->activationResult.referralSum);
      break;
    default:
      TraceWarning("Unsupported activation type %d\n", record->activation.activationType);
      break;
  }
}

void PushPayment(const Transaction *record, PaymentState state, Summary *summary) {
  const char *rrn = record->request.requestId;
  if (rrn == nullptr) TraceError("Payment without RRN\n");
  const PaymentAmounts amounts = CountPayment(record);
  PaymentStackPush(&summary->payments, rrn, amounts.earned, amounts.spent, amounts.discount, state);
}

void SumRecord(const Transaction *record, Summary *summary) {
  switch (record->request.type) {
    case REQUEST_ACTIVATION:
      SumActivation(record, summary);
      break;
    case REQUEST_PAYMENT:
      PushPayment(record, PAYMENT_UNANSWERED, summary);
      break;
    case REQUEST_PAYMENT_AND_CONFIRM:
      PushPayment(record, PAYMENT_CONFIRMED, summary);
      break;
    case REQUEST_PAYMENT_CONFIRM:
      PaymentStackAnswer(&summary->payments, record->paymentConfirm.requestId,
                         record->paymentConfirm.isConfirm ? PAYMENT_CONFIRMED : PAYMENT_CANCELED);
      break;
    case REQUEST_DEPOSIT:
      AddAmount(&summary->deposits, record->depositAmount);
      break;
    case REQUEST_CASHBACK:
      AddAmount(&summary->refunds, record->returnedSum);
      break;
    default:
      TraceWarning("Unsupported request type %d\n", record->request.type);
      break;
  }
}

void SettlePayments(Summary *summary) {
  Trace("Begin stack processing\n");
  PaymentStackItem payment;
  while (PaymentStackPop(&summary->payments, &payment)) {
    Trace("-Stack item\n");
    if (payment.state == PAYMENT_CONFIRMED) {
      AddPayment(&summary->confirmed, payment);
    } else if (payment.state == PAYMENT_CANCELED) {
      AddPayment(&summary->canceled, payment);
    } else {
      AddPayment(&summary->unanswered, payment);
    }
  }
  PaymentStackFree(&summary->payments);
}

void PrintPayments(const char *trace_line, const char *title, const PaymentTotals &totals) {
  if (totals.count <= 0) return;
  Trace("%s", trace_line);
  ReceiptPrintf(report_buffer, "%s", title);
  ReceiptPrintf(report_buffer, "Кол-во: %d\n", totals.count);
  ReceiptPrintf(report_buffer, "Начислено бнс:%10s\n", FormatAmount(totals.earned));
  ReceiptPrintf(report_buffer, "Потрачено бнс:%10s\n", FormatAmount(totals.spent));
  ReceiptPrintf(report_buffer, "Скидка бнс:%13s\n\n", FormatAmount(totals.discount));
  ReceiptPrintf(report_buffer, "-----------------------\n");
}

void PrintAmounts(const char *trace_line, const char *title, const AmountTotals &totals) {
  if (totals.count <= 0) return;
  Trace("%s", trace_line);
  ReceiptPrintf(report_buffer, "%s", title);
  ReceiptPrintf(report_buffer, "Кол-во: %d\n", totals.count);
  ReceiptPrintf(report_buffer, "Сумма бнс:%14s\n\n", FormatAmount(totals.sum));
  ReceiptPrintf(report_buffer, "-----------------------\n");
}

void PrintSummary(const Summary &summary) {
  PrintPayments("Payment Confirmed report\n", "ПОДТВЕРЖДЕННЫЕ ПЛАТЕЖИ:\n", summary.confirmed);
  PrintPayments("Payment Canceled report\n", "ОТМЕНЕННЫЕ ПЛАТЕЖИ:\n", summary.canceled);
  PrintPayments("Payment Unknown report\n", "НЕПОДТВЕРЖД. ПЛАТЕЖИ:\n", summary.unanswered);
  PrintAmounts("Gift Card report\n", "ПОДАРОЧНЫЕ КАРТЫ:\n", summary.giftCards);
  PrintAmounts("Refer A Friend Report\n", "ПРИВЕДИ ДРУГА:\n", summary.referrals);
  PrintAmounts("Activation Report\n", "АКТИВАЦИИ:\n", summary.activations);
  PrintAmounts("Deposit Report\n", "ДЕПОЗИТЫ:\n", summary.deposits);
  PrintAmounts("Cashback Report\n", "ВОЗВРАТЫ:\n", summary.refunds);
}

void BeginBlock(const char *title, const Transaction *record) {
  ReceiptPrintf(report_buffer, "%s", title);
  ReceiptPrintf(report_buffer, "    %16s\n", TextOrEmpty(record->request.requestId));
  ReceiptPrintf(report_buffer, "%s\n", record->request.requestDate);
}

void EndBlock() {
  ReceiptPrintf(report_buffer, "------------------------\n");
}

void PrintActivationBlock(const Transaction *record) {
  const char *title = nullptr;
  int32_t sum = 0;
  switch (record->activation.activationType) {
    case ACTIVATION_SIMPLE:
      title = "АКТИВАЦИЯ\n";
      sum = record->activationResult.activationSum;
      break;
    case ACTIVATION_GIFT_CARD:
      title = "ПОДАРОЧНАЯ КАРТА\n";
      sum = record->activationResult.giftSum;
      break;
    case ACTIVATION_REFER_A_FRIEND:
      title = "ПРИВЕДИ ДРУГА\n";
      sum = record->activationResult.referralSum;
      break;
    default:
      DebugCheckFailed("transaction", __LINE__);
      return;
  }
  BeginBlock(title, record);
  ReceiptPrintf(report_buffer, "Сумма: %s\n", FormatAmount(sum));
  EndBlock();
}

void PrintBonusLines(const PaymentAmounts &amounts) {
  ReceiptPrintf(report_buffer, "Потрачено бнс:%10s\n", FormatAmount(amounts.spent));
  ReceiptPrintf(report_buffer, "Начислено бнс:%10s\n", FormatAmount(amounts.earned));
  ReceiptPrintf(report_buffer, "Скидка бнс:%10s\n", FormatAmount(amounts.discount));
}

void PrintPaymentBlock(const char *title, const Transaction *record) {
  BeginBlock(title, record);
  ReceiptPrintf(report_buffer, "Сумма: %s\n", FormatAmount(record->bill.totalSum));
  PrintBonusLines(CountPayment(record));
  EndBlock();
}

void PrintConfirmBlock(const Transaction *record) {
  BeginBlock(record->paymentConfirm.isConfirm ? "ПОДТВЕРЖДЕНИЕ ПЛАТЕЖА\n" : "ОТМЕНА ПЛАТЕЖА\n", record);
  EndBlock();
}

void PrintCreditBlock(const char *title, const Transaction *record, int32_t amount) {
  BeginBlock(title, record);
  ReceiptPrintf(report_buffer, "Зачислено бнс:%10s\n", FormatAmount(amount));
  EndBlock();
}

void PrintRecord(const Transaction *record) {
  switch (record->request.type) {
    case REQUEST_ACTIVATION:
      PrintActivationBlock(record);
      break;
    case REQUEST_PAYMENT:
      PrintPaymentBlock("ПЛАТЕЖ\n", record);
      break;
    case REQUEST_PAYMENT_AND_CONFIRM:
      PrintPaymentBlock("ПЛАТЕЖ И ПОДТВЕРЖДЕНИЕ\n", record);
      break;
    case REQUEST_PAYMENT_CONFIRM:
      PrintConfirmBlock(record);
      break;
    case REQUEST_DEPOSIT:
      PrintCreditBlock("ДЕПОЗИТ\n", record, record->depositAmount);
      break;
    case REQUEST_CASHBACK:
      // The log keeps no result of a return, so this is 0.00 unless the record was written elsewhere.
      PrintCreditBlock("ВОЗВРАТ\n", record, record->returnedSum);
      break;
    default:
      TraceWarning("Unsupported request type %d\n", record->request.type);
      break;
  }
}

}  // namespace

int GenerateSummaryReport(const char *from, const char *to) {
  if (!IsRange(from, to)) return ERR_REPORT_RANGE;
  const ScopedRecords records(GetLogRecords());
  ReplaceReport();
  Summary summary = {};
  VisitRecords(records.get(), from, to, [&](const Transaction *record) { SumRecord(record, &summary); });
  SettlePayments(&summary);
  PrintSummary(summary);
  Trace("GetReceiptLength\n");
  const int length = ReportLength();
  Trace("Returning Report Length %d\n", length);
  return length;
}

int GenerateReport(const char *from, const char *to) {
  if (!IsRange(from, to)) return ERR_REPORT_RANGE;
  Trace("GenerateReport\n");
  const ScopedRecords records(GetLogRecords());
  ReplaceReport();
  VisitRecords(records.get(), from, to, PrintRecord);
  return ReportLength();
}

const char *GetReportPtr() {
  return report_buffer != nullptr ? ReceiptGetText(report_buffer) : nullptr;
}

}  // namespace lumo
