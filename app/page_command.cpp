#include "app/page_command.h"

#include <array>
#include <utility>

#include "text/json.h"
#include "text/utf.h"

namespace {

// Looked up in this order; the first exact match wins.
constexpr std::array<std::pair<std::wstring_view, EBridgeCommand>, 15> kCommandNames{{
    {L"patch", EBridgeCommand::Patch},
    {L"play", EBridgeCommand::Play},
    {L"playMulti", EBridgeCommand::PlayMulti},
    {L"repair", EBridgeCommand::Repair},
    {L"removeOrphans", EBridgeCommand::RemoveOrphans},
    {L"refresh", EBridgeCommand::Refresh},
    {L"minimize", EBridgeCommand::Minimize},
    {L"close", EBridgeCommand::Close},
    {L"toggleSettings", EBridgeCommand::ToggleSettings},
    {L"languageEN", EBridgeCommand::LanguageEN},
    {L"languageAR", EBridgeCommand::LanguageAR},
    {L"openExternal", EBridgeCommand::OpenExternal},
    {L"startDrag", EBridgeCommand::StartDrag},
    {L"startResize", EBridgeCommand::StartResize},
    {L"openLog", EBridgeCommand::OpenLog},
}};

EBridgeCommand CommandNamed(std::wstring_view name) {
  for (const auto& [commandName, command] : kCommandNames) {
    if (commandName == name) return command;
  }
  return EBridgeCommand::None;
}

// The member a command carries its argument in; empty for commands without one.
std::wstring_view ArgumentMember(EBridgeCommand command) {
  switch (command) {
    case EBridgeCommand::OpenExternal:
      return L"url";
    case EBridgeCommand::StartResize:
      return L"edge";
    default:
      return {};
  }
}

}  // namespace

bool ParseBridgeCommand(std::string_view message, SBridgeRequest& request) {
  request = {};
  if (message.empty() || message.size() > kMaxCommandBytes) return false;
  const std::wstring wide = text::Utf8ToWide(message);
  if (wide.empty()) return false;
  text::CJsonValue root;
  if (!text::ParseJson(wide, root) || !root.IsObject()) return false;
  const text::CJsonValue* name = root.Find(L"command");
  if (name == nullptr || !name->IsString()) return false;
  const EBridgeCommand command = CommandNamed(name->AsString());
  if (command == EBridgeCommand::None) return false;

  std::wstring argument;
  if (const std::wstring_view member = ArgumentMember(command); !member.empty()) {
    const text::CJsonValue* value = root.Find(member);
    if (value == nullptr || !value->IsString() || value->AsString().empty()) return false;
    argument = value->AsString();
  }
  request = {command, std::move(argument)};
  return true;
}
