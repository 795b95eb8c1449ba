/* The register around the sale of a document: SNIPPET is its program.
 *
 *   sale card:NUMBER sell:TOTAL:WISH send ...     in the given order
 *
 * The library file lies in the folder where the system finds it; what it returns is printed, a fact a line.
 */
#include <stdio.h>
#include <stdlib.h>

#include "lumo.h"

static void TakeMoney(int amount) {
  printf("money %d\n", amount);
}

static void Print(const char *header, const char *body, const char *footer) {
  printf("slip\n%s%s%send of slip\n", header, body, footer);
}

static void Show(const char *message, const char *more) {
  printf("message %s [%s]\n", message, more != NULL ? more : "");
}

#include SNIPPET

int main(int argc, char **argv) {
  const char *card = "";
  int i, total, wish;
  setvbuf(stdout, NULL, _IONBF, 0);
  if (LUMOInit() != 0) return 1;
  OpenShift("42");
  for (i = 1; i < argc; ++i) {
    if (strncmp(argv[i], "card:", 5) == 0) {
      card = argv[i] + 5;
    } else if (sscanf(argv[i], "sell:%d:%d", &total, &wish) == 2) {
      static const char *const kOutcomes[] = {"SOLD", "NOT_SOLD", "NOT_KNOWN"};
      printf("outcome %s\n", kOutcomes[Sell(card, "7", total, wish)]);
    } else if (strcmp(argv[i], "send") == 0) {
      SendWhatWaits();
      printf("waiting %d\n", lumoOfflineCount());
    } else {
      return 2;
    }
  }
  CloseShift();
  return 0;
}
