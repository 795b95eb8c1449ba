#include <dlfcn.h>

#include <filesystem>
#include <fstream>

#include "lumo.h"
#include "payment.h"

namespace bench {
namespace {

class Lumo : public Till {
 public:
  Lumo(const std::string &library, const std::string &folder, int port) : folder_(folder) {
    // The library works in the folder it lies in.
    const std::string file = folder + "liblumo.so";
    std::filesystem::copy_file(library, file);
    const std::string address = "http://127.0.0.1:" + std::to_string(port) + "/ws";
    std::ofstream(folder + "CONFIG") << R"({"terminalId":")" << kTerminal << R"(","protocolVersion":"1.0",)"
                                     << R"("serverAddr":")" << address << R"(","serverAltAddr":")" << address
                                     << R"(","retailNetworkName":")" << kRetailNetwork
                                     << R"(","timeout":5,"offlineMode":1,"logSize":)" << kLogSize
                                     << R"(,"receiptHeader":")" << kHeader << R"(","receiptFooter":")"
                                     << kFooter << R"("})";
    std::ofstream(folder + "STATE") << R"({"reqId":")" << kFirstRrn
                                    << R"(","shiftId":"42","offline":0,"shiftState":1,"update":0})";
    module_ = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    Require(module_ != nullptr, "loading the library file");
    decltype(&::LUMOInit) init;
    Find(init, "LUMOInit");
    Find(create_, "CreateTransaction");
    Find(pay_, "PaymentProc");
    Find(header_, "getReceiptHeaderPtr");
    Find(body_, "getReceiptBodyPtr");
    Find(footer_, "getReceiptFooterPtr");
    Find(close_, "CloseTransaction");
    Require(init() == 0, "LUMOInit");
  }

  std::string Pay() override {
    Require(create_(kCard, kCashier) == 0, "CreateTransaction");
    Require(pay_(kSpend, kBill) == 0, "PaymentProc");
    std::string slip = header_();
    slip += body_();
    slip += footer_();
    Require(close_() == 0, "CloseTransaction");
    return slip;
  }

  std::string LastRecord() override {
    std::ifstream log(folder_ + "LOG");
    std::string last;
    for (std::string line; std::getline(log, line);) last = line;
    return last;
  }

 private:
  template <typename Function>
  void Find(Function &function, const char *name) {
    function = reinterpret_cast<Function>(dlsym(module_, name));
    Require(function != nullptr, name);
  }

  std::string folder_;
  void *module_ = nullptr;
  decltype(&::CreateTransaction) create_ = nullptr;
  decltype(&::PaymentProc) pay_ = nullptr;
  decltype(&::getReceiptHeaderPtr) header_ = nullptr;
  decltype(&::getReceiptBodyPtr) body_ = nullptr;
  decltype(&::getReceiptFooterPtr) footer_ = nullptr;
  decltype(&::CloseTransaction) close_ = nullptr;
};

}  // namespace

std::unique_ptr<Till> OpenLumo(const std::string &library, const std::string &folder, int port) {
  return std::make_unique<Lumo>(library, folder, port);
}

}  // namespace bench
