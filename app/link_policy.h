#pragma once
// The one way the page can make the system open something: an https address
// handed to the user's browser. No host is allow-listed; the rules below only
// keep out other schemes, control characters and characters that a shell
// command line would treat specially.

#include <string>
#include <string_view>

inline constexpr std::wstring_view kLinkRefused = L"That link was refused.";
inline constexpr std::wstring_view kLinkNotOpened = L"That link could not be opened.";

// Trims spaces, tabs, CR and LF from both ends and puts "https://" in front
// of a text that names no scheme ("://" nowhere). Empty when nothing is left.
std::wstring NormalizeExternalLink(std::wstring_view url);

// True for a normalised address of 9 to 2048 characters that begins with
// "https://" in any letter case and holds no character below 32 and none of
// '"', '<', '>', '|'.
bool IsAllowedExternalLink(std::wstring_view link);
