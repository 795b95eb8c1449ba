/* A cash register with the loyalty programme:   sale BILL   with the path of BILL.JSN beside the library
 * file. It reads what the cashier does, a line each, and ends each answer with the line "ready": CARD sells
 * what is on the counter to the customer with this card CARD spend    the same; the customer wants to pay
 * with bonuses send          sends what waits for the server The end of the input closes the shift. */
#include <stdio.h>
#include <string.h>
#ifdef _WIN32
#include <windows.h>
#else
#include <time.h>
#endif

#include "lumo.h"

/* The time as the library writes it, such as "2012-12-05T10:00:00Z". */
static const char *Now(void) {
  static char text[40];
#ifdef _WIN32
  SYSTEMTIME t;
  GetSystemTime(&t);
  sprintf(text, "%04u-%02u-%02uT%02u:%02u:%02uZ", t.wYear, t.wMonth, t.wDay, t.wHour, t.wMinute, t.wSecond);
#else
  const time_t t = time(NULL);
  strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", gmtime(&t));
#endif
  return text;
}

static void Say(const char *what, const char *outcome, int code) {
  const char *why = code == ERR_SERVER_ERROR ? getResponseStateCode() : GetErrorMessage(code);
  printf("%s %s: %d %s\n", what, outcome, code, why);
}

/* The goods on the counter. */
static int WriteBill(const char *path) {
  FILE *bill = fopen(path, "wb");
  if (bill == NULL) return ERR_BILL_OPEN;
  fprintf(bill,
          "{\"totalSum\":15000,\"orderLen\":2,\"billNum\":\"1\",\"billDate\":\"%s\",\"partnerFee\":0,"
          "\"goodList\":{\"good\":["
          "{\"title\":\"Хлеб\",\"productCode\":\"001\",\"positionCost\":5000,\"orderNum\":1,\"cnt\":1},"
          "{\"title\":\"Чай\",\"productCode\":\"002\",\"positionCost\":10000,\"orderNum\":2,\"cnt\":2}]}}",
          Now());
  return fclose(bill) == 0 ? 0 : ERR_BILL_OPEN;
}

/* The server may have carried it out: only its answer is missing. */
static int IsLost(int code) {
  return code <= ERR_JSON_SYNTAX && code >= ERR_REQUEST_SEND && code != ERR_SERVER_ERROR;
}

/* A sale in the current transaction. Goods can always be sold without the card. */
static void Sell(int wants_to_spend) {
  char before[32] = "";
  const char *rrn = getRRN();
  int code;
  if (rrn != NULL) sprintf(before, "%.31s", rrn);
  if (BalanceProc() == 0) printf("on the card: %d.%02d\n", GetBalance() / 100, GetBalance() % 100);
  rrn = getRRN();
  if (rrn == NULL || strcmp(rrn, before) == 0) { /* the server would refuse the sale for ever */
    puts("no number: the server was never met, or the clock is behind; sell without the card");
    return;
  }
  code = PaymentProc(wants_to_spend, "BILL.JSN"); /* how many bonuses pay, the server decides */
  rrn = getRRN();
  if (code == 0 || code == ERR_BILL_OPEN) { /* paid; at worst the bill could not be rewritten */
    printf("%s%s%s", getReceiptHeaderPtr(), getReceiptBodyPtr(), getReceiptFooterPtr());
    code = PaymentConfirmProc(rrn); /* until now the bonuses were only reserved */
    if (IsLost(code)) code = PaymentConfirmProc(rrn);
    if (code == 0 || strcmp(getResponseStateCode(), "BILL_INCORRECT_STATE") == 0) /* it had arrived */
      printf("%s %s\n", rrn, lumoIsOffline() ? "waits for the server" : "is confirmed");
    else
      Say(rrn, "is paid, confirm it later", code);
  } else if (IsLost(code)) { /* paid or not? Undone, it can be sold again */
    code = PaymentCancelProc(rrn);
    if (code == 0 || strcmp(getResponseStateCode(), "BILL_NOT_FOUND") == 0)
      printf("%s %s: sell again\n", rrn, code == 0 ? "is cancelled" : "was never paid");
    else
      Say(rrn, "may be paid, cancel it later", code);
  } else {
    Say(rrn, "is not paid", code);
  }
}

int main(int argc, char **argv) {
  char opened[32], line[100], word[50], wish[50];
  int code = argc == 2 ? LUMOInit() : ERR_CONFIG_LOAD;
  if (code == 0) code = OpenShift("1");
  if (code != 0 && code != ERR_SHIFT_ALREADY_OPEN) return Say("sale BILL", "cannot start", code), 1;
#if defined(_WIN32) && !defined(UNDER_CE)
  SetConsoleOutputCP(CP_UTF8);
#endif
  sprintf(opened, "%.16s", Now()); /* the report's bounds are texts: before any second of this minute */
  while (puts("ready"), fflush(stdout), fgets(line, sizeof line, stdin) != NULL) {
    wish[0] = 0;
    if (sscanf(line, "%49s %49s", word, wish) < 1) continue;
    if (strcmp(word, "send") == 0) {
      const int waiting = lumoOfflineCount(), sent = SendOfflinePayments();
      printf("sent %d of %d\n", sent, waiting);
      if (sent == waiting) lumoClearOffline(sent); /* else OFFLINE holds those that failed */
    } else if ((code = WriteBill(argv[1])) != 0 || (code = CreateTransaction(word, "7")) != 0) {
      Say(word, "is not sold to", code);
    } else {
      Sell(strcmp(wish, "spend") == 0);
      CloseTransaction();
    }
  }
  if (GenerateSummaryReport(opened, "9") > 0) fputs(GetReportPtr(), stdout); /* "9": behind all dates */
  CloseShift();
  return LUMOClean();
}
