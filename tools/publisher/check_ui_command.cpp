// check-ui: reads a launcher UI document with the launcher's own reader and
// says what the page would show and what would be dropped, and why.

#include "platform/path_text.h"
#include "text/ui_document.h"
#include "text/utf.h"
#include "tools/publisher/command_support.h"
#include "tools/publisher/commands.h"
#include "tools/publisher/console.h"
#include "tools/publisher/host_files.h"

namespace publisher {
namespace {

constexpr std::wstring_view kCheckUiHelp =
    L"Usage: vardeni-publish check-ui <ui.json>\n"
    L"\n"
    L"Reads a launcher UI document exactly as the launcher does and prints what\n"
    L"the page would show, then every field or event that would be dropped, cut\n"
    L"or ignored, and why. The exit status is 1 when the launcher could not read\n"
    L"the document at all.";

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::wstring Quoted(const std::wstring& text) { return L"\"" + text + L"\""; }

void PrintContents(const text::SLauncherUiDocument& document) {
  PrintLine(L"clock: " + std::wstring(document.utcClock ? L"UTC" : L"the player's local time"));
  PrintLine(L"patch note: " + (document.hasPatchNote ? Quoted(document.patchNote.title) : L"none"));
  PrintLine(L"events: " + std::to_wstring(document.events.size()) + L" kept");
  const std::pair<const wchar_t*, const std::wstring*> links[] = {
      {L"website", &document.links.website},
      {L"discord", &document.links.discord},
      {L"shop", &document.links.shop},
      {L"register", &document.links.registration},
  };
  std::wstring set;
  for (const auto& [name, value] : links) {
    if (!value->empty()) set += (set.empty() ? L"" : L", ") + std::wstring(name);
  }
  PrintLine(L"links: " + (set.empty() ? std::wstring(L"none") : set));
  PrintLine(L"maintenance: " + std::wstring(document.maintenanceActive ? L"on" : L"off") +
            (document.maintenanceText.empty() ? L"" : L", text " + Quoted(document.maintenanceText)));
}

}  // namespace

int RunCheckUi(const Arguments& arguments) {
  CParsedOptions options;
  if (auto stop = ParseCommandOptions(L"check-ui", arguments, {}, kCheckUiHelp, options)) return *stop;
  if (options.Positional().size() != 1) return UsageError(L"check-ui", L"name exactly one ui.json file");
  const std::filesystem::path file = platform::ToPath(options.Positional().front());
  std::string bytes;
  std::wstring error;
  // No larger than a launcher reads.
  if (!ReadWholeFile(file, text::kMaxUiDocumentBytes, bytes, error)) return Failure(error);

  const std::wstring wide = text::Utf8ToWide(bytes);
  if (wide.empty() && !bytes.empty()) return Failure(PathProblem(file, L"is not valid UTF-8"));
  text::SLauncherUiDocument document;
  std::vector<text::SUiDocumentNote> notes;
  if (!text::ReadLauncherUiDocument(wide, document, error, &notes)) {
    if (std::string_view(bytes).starts_with(kByteOrderMark)) {
      error += L" It starts with a byte order mark; save it as UTF-8 without one.";
    }
    return Failure(PathProblem(file, error));
  }
  PrintContents(document);
  for (const text::SUiDocumentNote& note : notes) PrintLine(L"dropped or changed: " + note.where + L": " + note.what);
  PrintLine(std::to_wstring(notes.size()) + L" note(s)");
  return kExitSuccess;
}

}  // namespace publisher
