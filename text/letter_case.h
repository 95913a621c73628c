#pragma once
// Letter case of file names, the same on every system. Windows's file systems
// treat two names as one when their UTF-16 units have the same simple upper
// case (their upcase table); the C library's towlower instead depends on the
// locale and differs between systems.

namespace text {

// The lower case of the character's simple upper case, from a table compiled
// in (Unicode's simple mappings, Basic Multilingual Plane only, as the upcase
// tables are). Two characters Windows takes as the same letter therefore fold
// alike ("Ä" and "ä", "ı" and "i", "ς" and "σ"); a few that it tells apart
// fold alike too ("İ" and "i", "ẞ" and "ß"), which errs on the side of
// calling two names one. Folding twice changes nothing more. Characters past
// U+FFFF are unchanged.
wchar_t FoldLetterCase(wchar_t c);

}  // namespace text
