// bindings/ignored.cpp: a result that is not looked at: the compiler says so, which is what this file is for.
#include "lumo.hpp"

int main() {
  lumo::CreateTransaction("1000000001", "7");
}
