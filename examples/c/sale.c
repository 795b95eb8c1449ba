/* A cash register with the loyalty programme: sales, a server that goes away and comes back, answers that are
 * lost, a shift's report.
 *
 *   sale FOLDER      the folder of the library file; the bills lie there too
 *
 * It reads what the cashier does, a line each, and ends its answer to each with the line "ready":
 *   CARD          sells what is on the counter to the customer with this card
 *   CARD spend    the same; the customer wants to pay with bonuses, as far as the programme lets her
 *   send          sends what waits for the server
 * The end of the input closes the shift. */
#include <stdio.h>
#include <string.h>
#ifdef _WIN32
#include <windows.h>
#else
#include <time.h>
#endif

#include "lumo.h"

/* The time as the library writes it, such as "2012-12-05T10:00:00Z". */
static void Now(char text[32]) {
#ifdef _WIN32
  SYSTEMTIME now;
  GetSystemTime(&now);
  sprintf(text, "%04u-%02u-%02uT%02u:%02u:%02uZ", now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute,
          now.wSecond);
#else
  const time_t now = time(NULL);
  strftime(text, 32, "%Y-%m-%dT%H:%M:%SZ", gmtime(&now));
#endif
}

static void Say(const char *step, int code) {
  printf("%s: %d %s\n", step, code, GetErrorMessage(code));
  if (code == ERR_SERVER_ERROR) printf("the server says %s\n", getResponseStateCode());
}

/* The goods on the counter. */
static int WriteBill(const char *folder) {
  char path[300], date[32];
  FILE *bill;
  sprintf(path, "%.280s/BILL.JSN", folder);
  bill = fopen(path, "wb");
  if (bill == NULL) return 0;
  Now(date);
  fprintf(bill, "{\"totalSum\":15000,\"orderLen\":2,\"billNum\":\"1\",\"billDate\":\"%s\",\"partnerFee\":0,",
          date);
  fputs("\"goodList\":{\"good\":[", bill);
  fputs("{\"title\":\"Хлеб\",\"productCode\":\"001\",\"positionCost\":5000,\"orderNum\":1,\"cnt\":1},", bill);
  fputs("{\"title\":\"Чай\",\"productCode\":\"002\",\"positionCost\":10000,\"orderNum\":2,\"cnt\":2}]}}",
        bill);
  return fclose(bill) == 0;
}

/* Whether the server may have carried out what it was sent, and only its answer did not arrive. */
static int IsLost(int code) {
  return code == ERR_REQUEST_SEND || code == ERR_NO_RESPONSE || code == ERR_JSON_SYNTAX ||
         code == ERR_RESPONSE_STRUCTURE || code == ERR_RESPONSE_TYPE || code == ERR_RESPONSE_CONTENT ||
         code == ERR_SERVER_FAILURE;
}

static int IsRefused(int code, const char *reason) {
  return code == ERR_SERVER_ERROR && strcmp(getResponseStateCode(), reason) == 0;
}

/* Finds out whether a payment was made whose answer was lost. Whatever it was, afterwards it is not. */
static void SettleLost(const char *rrn) {
  const int code = PaymentCancelProc(rrn);
  if (code == 0 && lumoIsOffline()) {
    printf("%s: its cancellation waits for the server; sell again\n", rrn);
  } else if (code == 0) {
    printf("%s had been paid and is cancelled; sell again\n", rrn);
  } else if (IsRefused(code, "BILL_NOT_FOUND")) {
    printf("%s was never paid; sell again\n", rrn);
  } else {
    Say("cancellation", code);
    printf("%s may be paid: cancel it later; sell without the card\n", rrn);
  }
}

/* Without it the bonuses are neither spent nor earned. */
static void Confirm(const char *rrn) {
  int code = PaymentConfirmProc(rrn);
  if (IsLost(code)) code = PaymentConfirmProc(rrn); /* one that has arrived is refused the second time */
  if (code == 0 || IsRefused(code, "BILL_INCORRECT_STATE")) {
    printf("%s %s\n", rrn, lumoIsOffline() ? "waits for the server" : "is confirmed");
  } else {
    Say("confirmation", code);
    printf("%s is not confirmed: confirm it later\n", rrn);
  }
}

/* One sale in the current transaction. Goods can always be sold without the card. */
static void Sell(const char *folder, int spend) {
  char before[32] = "", rrn[32] = "";
  int code;
  if (getRRN() != NULL) sprintf(before, "%.31s", getRRN());
  code = BalanceProc(); /* good to know, and no reason to stop */
  if (code == 0) printf("on the card: %d.%02d\n", GetBalance() / 100, GetBalance() % 100);
  if (getRRN() == NULL || strcmp(getRRN(), before) == 0) {
    printf(
        "sell without the card: the server was never met or the clock is behind, and would refuse the sale "
        "for ever\n");
    return;
  }
  if (!WriteBill(folder)) {
    printf("sell without the card: the bill cannot be written\n");
    return;
  }
  code = PaymentProc(spend, "BILL.JSN"); /* spend says whether; how much is the server's to decide */
  sprintf(rrn, "%.31s", getRRN());
  if (IsLost(code)) {
    SettleLost(rrn);
  } else if (code == 0 || code == ERR_BILL_OPEN) { /* paid; at worst the bill could not be written back */
    printf("%s%s%s", getReceiptHeaderPtr(), getReceiptBodyPtr(), getReceiptFooterPtr());
    Confirm(rrn);
  } else {
    Say("payment", code);
    printf("sell without the card\n");
  }
}

static void SendWaiting(void) {
  const int waiting = lumoOfflineCount();
  const int sent = SendOfflinePayments();
  printf("sent %d of %d\n", sent, waiting);
  /* OFFLINE keeps the records that failed. When none did, it keeps them all, until it is cleared. */
  if (sent == waiting && lumoClearOffline(sent) != 0) printf("OFFLINE could not be cleared\n");
}

int main(int argc, char **argv) {
  char opened[32], line[100], word[50], wish[50];
  int code;
  if (argc != 2) {
    fprintf(stderr, "usage: sale FOLDER\n");
    return 2;
  }
#if defined(_WIN32) && !defined(UNDER_CE)
  SetConsoleOutputCP(CP_UTF8);
#endif
  code = LUMOInit();
  if (code != 0) return Say("start", code), 1;
  Now(opened);
  code = OpenShift("1");
  if (code != 0 && code != ERR_SHIFT_ALREADY_OPEN) return Say("shift", code), 1;

  while (printf("ready\n"), fflush(stdout), fgets(line, sizeof line, stdin) != NULL) {
    wish[0] = 0;
    if (sscanf(line, "%49s %49s", word, wish) < 1) continue;
    if (strcmp(word, "send") == 0) {
      SendWaiting();
    } else if ((code = CreateTransaction(word, "7")) != 0) {
      Say("transaction", code);
    } else {
      Sell(argv[1], strcmp(wish, "spend") == 0);
      CloseTransaction();
    }
  }

  opened[16] =
      0; /* report bounds are texts: the minute stands before each of its seconds, "9" behind all dates */
  if (GenerateSummaryReport(opened, "9") > 0) printf("%s", GetReportPtr());
  code = CloseShift();
  if (code != 0) Say("shift", code);
  return LUMOClean();
}
