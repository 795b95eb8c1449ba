#include "register/till.h"

#include <fstream>
#include <iterator>

namespace test {

Till::Till() : folder(fresh.path() / "terminal") {
  const std::filesystem::path built = std::filesystem::u8path(LUMO_LIBRARY_FILE);
  std::filesystem::create_directory(folder);
  library = folder / built.filename();
  std::filesystem::copy_file(built, library);
}

std::unique_ptr<Process> Till::Start(const Words &words, const std::string &input) const {
  Words line = {"--library", library.u8string()};
  line.insert(line.end(), words.begin(), words.end());
  return std::make_unique<Process>(std::filesystem::u8path(REGISTER_PROGRAM), line, fresh.path(), input);
}

Outcome Till::Run(const Words &words, const std::string &input) const {
  return Start(words, input)->Wait();
}

nlohmann::json Till::Facts(const Words &words, int status) const {
  Words line = {"--json"};
  line.insert(line.end(), words.begin(), words.end());
  const Outcome run = Run(line);
  EXPECT_EQ(run.status, status) << run.err;
  EXPECT_EQ(run.out.find('\n'), run.out.size() - 1) << run.out;
  nlohmann::json facts = nlohmann::json::parse(run.out, nullptr, false);
  EXPECT_TRUE(facts.is_object()) << run.out;
  return facts;
}

void Till::Configure(const std::string &more, const std::string &address) const {
  Write("CONFIG", R"({"terminalId":"12345","protocolVersion":"1.0","serverAddr":")" +
                      (address.empty() ? ServerAddress() : address) +
                      R"(","retailNetworkName":"Сеть","timeout":5,"logSize":1000,)" +
                      R"("receiptHeader":"Магазин","receiptFooter":"Спасибо")" +
                      (more.empty() ? "" : "," + more) + "}");
}

std::string Till::Read(const std::string &name) const {
  std::ifstream stream(folder / name, std::ios::binary);
  EXPECT_TRUE(stream.is_open()) << name << " is missing";
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void Till::Write(const std::string &name, const std::string &bytes) const {
  std::ofstream stream(folder / name, std::ios::binary);
  stream << bytes;
  ASSERT_TRUE(stream.flush()) << name;
}

Till::Snapshot Till::Files() const {
  Snapshot files;
  for (const auto &entry : std::filesystem::directory_iterator(folder)) {
    const std::string name = entry.path().filename().u8string();
    if (entry.path() == library) continue;
    files[name] = {Read(name), entry.last_write_time()};
  }
  return files;
}

}  // namespace test
