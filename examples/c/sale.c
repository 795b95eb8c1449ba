/* One sale, as a cash register makes it: the amount, the customer's card, the slip.
 *
 *   sale CARD CASHIER AMOUNT SPEND      amounts in hundredths: 15000 is 150.00
 *
 * CONFIG.JSN, or CONFIG from an earlier run, lies beside the library file; the files that lumo writes go
 * there too. */
#include <stdio.h>
#include <stdlib.h>

#include "lumo.h"

#if defined(_WIN32) && !defined(UNDER_CE)
#include <windows.h>
static void PrepareConsole(void) {
  SetConsoleOutputCP(CP_UTF8);
}
#else
static void PrepareConsole(void) {}
#endif

/* The cashier's text for a failure. What went wrong in detail is in TRACE.TXT. */
static int Fail(const char *step, int code) {
  fprintf(stderr, "%s: %d %s\n", step, code, GetErrorMessage(code));
  if (code == ERR_SERVER_ERROR)
    fprintf(stderr, "the server says %s %s\n", getResponseState(), getResponseStateCode());
  return EXIT_FAILURE;
}

static void Print(const char *text) {
  if (text != NULL) fputs(text, stdout);
}

static int Sell(int amount, int spend) {
  int code = BalanceProc();
  if (code != 0) return Fail("balance", code);
  printf("on the card: %d\n", GetBalance());

  /* A register with a list of goods writes its own bill. */
  code = CreateAmountBill(amount, "BILL.JSN");
  if (code != 0) return Fail("bill", code);
  code = PaymentAndConfirmProc(spend, "BILL.JSN");
  /* Paid, and only the bill could not be written back: asking for the money again would be wrong. */
  if (code != 0 && code != ERR_BILL_OPEN) return Fail("payment", code);

  printf("RRN %s: spent %d, earned %d\n\n", getRRN(), GetSpendBonusAmount(), GetEarnBonusAmount());
  Print(getReceiptHeaderPtr());
  Print(getReceiptBodyPtr());
  Print(getReceiptFooterPtr());
  return EXIT_SUCCESS;
}

int main(int argc, char **argv) {
  int code, result;
  if (argc != 5) {
    fprintf(stderr, "usage: sale CARD CASHIER AMOUNT SPEND\n");
    return 2;
  }
  PrepareConsole();

  code = LUMOInit();
  if (code != 0) return Fail("start", code);
  code = OpenShift("1");
  if (code != 0 && code != ERR_SHIFT_ALREADY_OPEN) return Fail("shift", code);
  code = CreateTransaction(argv[1], argv[2]);
  if (code != 0) return Fail("transaction", code);

  result = Sell(atoi(argv[3]), atoi(argv[4]));

  CloseTransaction();
  CloseShift();
  LUMOClean();
  return result;
}
