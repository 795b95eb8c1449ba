#include "workloads.h"

#include <cstdio>
#include <cstdlib>

namespace bench {
namespace {

const char *const kTitles[] = {
    "Молоко пастеризованное «Луговое» 3,2% 930 мл",
    "Хлеб ржано-пшеничный нарезка, 350 г",
    "Сыр полутвёрдый фасованный 45%, кг",
    "Масло сливочное крестьянское 72,5% 180 г",
    "Чай чёрный листовой байховый 100 пак.",
    "Яблоки сезонные, вес.",
    "Пакет-майка с логотипом магазина",
    "Кофе натуральный жареный молотый 250 г",
};

enum class Bonuses { kNone, kTwo };

std::string MakeGood(int number, Bonuses bonuses) {
  const int cost = 1990 + number * 137 % 250000;
  char text[700];
  std::snprintf(text, sizeof text,
                "{\"title\":\"%s\",\"productCode\":\"46%08d\",\"positionCost\":%d,\"orderNum\":%d,\"cnt\":%d",
                kTitles[number % 8], number * 7919 % 100000000, cost, number + 1, 1 + number % 3);
  std::string good = text;
  if (bonuses == Bonuses::kTwo) {
    std::snprintf(text, sizeof text,
                  ",\"bonus\":[{\"earned\":%d,\"spend\":%d,\"organizerFee\":%d,\"accountType\":\"GLOBAL\"},"
                  "{\"earned\":%d,\"spend\":0,\"organizerFee\":0,\"accountType\":\"LOCAL\"}]",
                  cost / 20, cost / 50, cost / 100, cost / 40);
    good += text;
  }
  return good + "}";
}

std::string MakeBillOf(int goods, Bonuses bonuses) {
  std::string text = "{\"totalSum\":" + std::to_string(goods * 12345) +
                     ",\"orderLen\":" + std::to_string(goods) +
                     ",\"billNum\":\"000417\",\"billDate\":\"2024-05-17T10:42:05Z\",\"partnerFee\":1000,"
                     "\"goodList\":{\"good\":[";
  for (int i = 0; i < goods; ++i) text += (i == 0 ? "" : ",") + MakeGood(i, bonuses);
  return text + "]}}";
}

}  // namespace

std::string MakeBill(int goods) {
  return MakeBillOf(goods, Bonuses::kTwo);
}

std::string MakeUnpaidBill(int goods) {
  return MakeBillOf(goods, Bonuses::kNone);
}

std::string MakeBills(size_t least_bytes) {
  const std::string bill = MakeBill(100);
  std::string text = "[" + bill;
  while (text.size() + 1 < least_bytes) text += "," + bill;
  return text + "]";
}

std::string MakeAnswer() {
  return "{\"putPaymentResponse\":{\"response\":{\"ver\":\"1.0\",\"requestId\":\"00417240517000123\","
         "\"responseId\":\"8812736450\",\"responseDate\":\"2024-05-17T10:42:06Z\",\"requestState\":"
         "\"SUCCESS\","
         "\"requestStateCode\":\"OK\",\"message\":\"Операция выполнена "
         "успешно\",\"isNeedUpdate\":false},\"bill\":" +
         MakeBill(2) + "}}";
}

const Workload &FindWorkload(const std::string &name) {
  if (name == "answer") {
    static const Workload answer{"answer", MakeAnswer()};
    return answer;
  }
  if (name == "bills") {
    static const Workload bills{"bills", MakeBills(10000000)};
    return bills;
  }
  if (name == "bill") {
    static const Workload bill{"bill", MakeBill(100)};
    return bill;
  }
  std::fprintf(stderr, "no such workload: %s\n", name.c_str());
  std::exit(2);
}

}  // namespace bench
