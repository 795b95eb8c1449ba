/* A cash register:   sale BILL   with the path of BILL.JSN beside the library file. What is on the counter is
 * sold by a line "1000000001", a customer's card, or "1000000001 spend", when bonuses shall pay too. A line
 * "send" sends what waits for the server, and the end of the input closes the shift. */
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

static void Say(const char *what, const char *outcome, int code) {
  const char *why = code == ERR_SERVER_ERROR ? getResponseStateCode() : GetErrorMessage(code);
  printf("%s %s", what, outcome);
  if (code != 0) printf(": %d %s", code, why);
  puts("");
}

/* A sale in the current transaction. Goods can always be sold without the card. */
static void Sell(int wants_to_spend) {
  const char *rrn = getRRN(), *outcome = "is not paid";
  char before[32] = "";
  int code, is_refused;
  if (rrn != NULL) sprintf(before, "%.31s", rrn);
  if (BalanceProc() == 0) printf("on the card: %d.%02d\n", GetBalance() / 100, GetBalance() % 100);
  rrn = getRRN();
  if (rrn == NULL || strcmp(rrn, before) == 0) { /* the server would refuse the sale for ever */
    puts("no number: the server was never met, or the clock is behind; sell without the card");
    return;
  }
  code = PaymentProc(wants_to_spend, "BILL.JSN"); /* how many bonuses pay, the server decides */
  rrn = getRRN();
  is_refused = code == ERR_SERVER_ERROR && strcmp(getResponseState(), "ERROR") == 0;
  if (code == 0 || code == ERR_BILL_OPEN) { /* paid; at worst the bill could not be rewritten */
    printf("%s%s%s", getReceiptHeaderPtr(), getReceiptBodyPtr(), getReceiptFooterPtr());
    code = PaymentConfirmProc(rrn); /* until now the bonuses were only reserved */
    if (code != 0) code = PaymentConfirmProc(rrn);
    if (strcmp(getResponseStateCode(), "BILL_INCORRECT_STATE") == 0) code = 0; /* the first had arrived */
    outcome = lumoIsOffline() ? "waits for the server" : "is confirmed";
    if (code != 0) outcome = "is paid, confirm it later";
  } else if (code <= ERR_JSON_SYNTAX && code >= ERR_REQUEST_SEND && !is_refused) {
    code = PaymentCancelProc(rrn); /* the answer is lost: paid or not? Undone, it can be sold again */
    outcome = code == 0 ? "is cancelled, sell again" : "may be paid, cancel it later";
    if (strcmp(getResponseStateCode(), "BILL_NOT_FOUND") == 0) outcome = "was never paid, sell again";
  }
  Say(rrn, outcome, code);
}

int main(int argc, char **argv) {
  char opened[32], line[100], word[100], wish[100];
  int c, code = argc == 2 ? LUMOInit() : ERR_CONFIG_LOAD;
  sprintf(opened, "%.16s", Now()); /* the report's bounds are texts: before any second of this minute */
  if (code != 0) return Say("sale BILL", "cannot start", code), 1;
  printf("lumo %s\n", lumoVersion());
  OpenShift("1"); /* one that is open since before a restart goes on */
  while (puts("ready"), fflush(stdout), fgets(line, sizeof line, stdin) != NULL) {
    const int words = sscanf(line, "%99s %99s", word, wish);
    if (strchr(line, '\n') == NULL) { /* the rest of a long line is no card of its own */
      while ((c = getchar()) != '\n' && c != EOF) continue;
    }
    if (words < 1) continue;
    if (strcmp(word, "send") == 0) {
      const int waiting = lumoOfflineCount(), sent = SendOfflinePayments();
      printf("sent %d of %d\n", sent, waiting);
      if (sent == waiting) lumoClearOffline(sent); /* else OFFLINE holds those that failed */
    } else if ((code = WriteBill(argv[1])) != 0 || (code = CreateTransaction(word, "7")) != 0) {
      Say(word, "is not sold to", code);
    } else {
      Sell(words == 2 && strcmp(wish, "spend") == 0);
      CloseTransaction();
    }
  }
  if (GenerateSummaryReport(opened, "9") > 0) fputs(GetReportPtr(), stdout); /* "9": behind all dates */
  return CloseShift();
}
