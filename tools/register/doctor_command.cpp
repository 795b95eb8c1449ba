#include <CLI/CLI.hpp>
#include <iostream>

#include "commands.h"
#include "doctor.h"
#include "trace_view.h"

namespace reg {
namespace {

Facts DoctorFacts(const Terminal &terminal, const Findings &findings) {
  Facts settings;
  for (const auto &[key, value] : terminal.settings.values) {
    if (IsNumberSetting(key)) {
      settings.Add(key.c_str(), terminal.settings.Number(key.c_str()));
    } else {
      settings.Add(key.c_str(), value);
    }
  }
  std::vector<Facts> list;
  for (const Finding &finding : findings.list()) {
    list.emplace_back();
    list.back()
        .Add("level", LevelName(finding.level))
        .Add("check", finding.check)
        .Add("finding", finding.text);
    list.back().Add("cure", finding.cure.empty() ? nullptr : finding.cure.c_str());
  }
  Facts facts;
  facts.Add("fit", findings.IsFit()).Add("folder", terminal.folder.u8string());
  facts.Add("settingsFile", terminal.settings.file.empty() ? nullptr : terminal.settings.file.c_str());
  return facts.Add("settings", settings).Add("findings", list);
}

void PrintDoctor(const Terminal &terminal, const Findings &findings) {
  const auto line = [](std::string label, size_t width, const std::string &text) {
    std::cout << "  " << label.append(width - std::min(width, label.size()), ' ') << " " << Showable(text)
              << '\n';
  };
  if (!terminal.settings.file.empty()) {
    std::cout << "Settings in force, of " << terminal.settings.file << '\n';
  }
  for (const auto &[key, value] : terminal.settings.values) line(key, 18, value);
  std::cout << "Findings\n";
  for (const Finding &finding : findings.list()) {
    line(LevelName(finding.level), 7, finding.check + ": " + finding.text);
    if (!finding.cure.empty()) line("", 7, "  cure: " + finding.cure);
  }
  std::cout << (findings.IsFit() ? "This terminal is fit to sell" : "This terminal is NOT fit to sell")
            << "; troubles: " << findings.Count(Level::kTrouble)
            << ", warnings: " << findings.Count(Level::kWarning) << '\n';
}

}  // namespace

void AddDoctorCommand(CLI::App &app, Till &till) {
  app.add_subcommand("doctor",
                     "Is this terminal fit to sell? Looks at everything, asks each server, changes nothing; "
                     "0 only when it is fit")
      ->callback([&till] {
        const Terminal terminal = LookAt(till.libraryFile);
        const Findings findings = Judge(terminal);
        till.Show(DoctorFacts(terminal, findings), [&] { PrintDoctor(terminal, findings); });
        if (!findings.IsFit()) till.status = kRefused;
      });
}

}  // namespace reg
