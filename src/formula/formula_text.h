#pragma once
// The text layer of the formula language: the private characters that the
// lexical passes write, and the string helpers every pass is built on.
//
// Formula text is handled one byte per character (Windows-1252). Each
// function word and each compiled variable becomes one byte. The bytes below
// are chosen so that upper-casing, which runs again on every pass of the
// compiler, never changes a character that a pass has already written.

#include <string>
#include <string_view>

namespace keldo::formula {

namespace ch {
// Function characters, in opcode order 1 to 33 (opcode 0 is a plain "(").
inline constexpr char kAbs = '\x14';
inline constexpr char kCos = '\xA3';
inline constexpr char kSin = 'S';
inline constexpr char kExp = '\x17';
inline constexpr char kSqr = '\x92';
inline constexpr char kTan = '?';
inline constexpr char kAtn = '\xD9';
inline constexpr char kLog = '\xC0';
inline constexpr char kSinc = '$';
inline constexpr char kSgn = '\xD1';
inline constexpr char kSinh = '\xB5';
inline constexpr char kCosh = '\xA9';
inline constexpr char kEntr = '\x1F';
inline constexpr char kRec = '\xD8';
inline constexpr char kGri = 'G';
inline constexpr char kRandom = ';';
inline constexpr char kNotFn = '~';
inline constexpr char kAcs = '\x05';
inline constexpr char kRang = '\x15';
inline constexpr char kDelta = '\x9D';
inline constexpr char kFac = '\xAD';
inline constexpr char kSumI = '\x8D';
inline constexpr char kSumJ = '\x8E';
inline constexpr char kSumK = '\x8F';
inline constexpr char kSumN = '\x90';
inline constexpr char kProdP = '\xBB';
inline constexpr char kProdQ = '\xBC';
inline constexpr char kBell = '\xC1';
inline constexpr char kG1 = '@';
inline constexpr char kG2 = '#';
inline constexpr char kG3 = '%';
inline constexpr char kG4 = '\xB6';
inline constexpr char kG5 = ':';

// Operators written by the passes.
inline constexpr char kNotEqual = '\xAE';
inline constexpr char kAtMost = '\xD3';
inline constexpr char kAtLeast = '\xD2';
inline constexpr char kAnd = '&';
inline constexpr char kOr = '\xAF';
inline constexpr char kNot = '\xB0';

// Operands: pi, the differential-equation state Y0..Y9, the F slots 0..4.
inline constexpr char kPi = '\xB2';
inline constexpr char kY[10] = {'\xC2', '\xD0', '\xC4', '\xC5', '\xC6', '\xC7', '\xC8', '\xC9', '\xCA', '\xCB'};
inline constexpr char kF[5] = {'\xDB', '\xDC', '\xDD', '\xDE', '\xDF'};

// Intermediate mark of DELTA( between two rewriting steps.
inline constexpr char kDeltaMark = '\xB1';
// Guard appended behind a command string while parameters are read.
inline constexpr char kGuard = '\xB4';
// The cancel mark of a parameter prompt, upper and lower case.
inline constexpr char kCancel = '\x9F';
inline constexpr char kCancelLower = '\xFF';
// A typed character that the compiler refuses, as it does "|".
inline constexpr char kBar179 = '\xB3';
// The opening quote that is removed before anything else.
inline constexpr char kLeftQuote = '\x91';
// A typed pi (code 227), also in its upper-cased form.
inline constexpr char kTypedPi = '\xE3';
inline constexpr char kTypedPiUpper = '\xC3';
}  // namespace ch

// The function characters for opcodes 1 to 33, in that order.
std::string_view FunctionCharacters();
// The characters that may stand in a number: "0123456789!" and pi.
std::string_view NumberCharacters();
// The Y0..Y9 and F0..F4 characters, fifteen in all.
std::string_view StateCharacters();

// Converts typed text (UTF-8) into the one-byte text of the language. Bytes
// that are not valid UTF-8 are kept as they stand; characters with no
// Windows-1252 byte become DEL (0x7F), which means nothing to the language.
std::string ToFormulaText(std::string_view utf8);
// The other way: Windows-1252 bytes, as files hold them, to UTF-8.
std::string FromAnsiText(std::string_view ansi);

// Upper-cases a-z and the lower-case Latin-1 letters; leaves every other byte.
std::string FormulaUpper(std::string text);
// Lower-cases A-Z.
std::string FormulaLower(std::string text);

// Replaces the first occurrence of find and starts again from the beginning,
// until find no longer occurs. find must not occur in replacement.
void ReplaceAll(std::string& text, std::string_view find, std::string_view replacement);
// One left-to-right sweep: every occurrence present now is replaced once.
void ReplaceEach(std::string& text, std::string_view find, std::string_view replacement);

// The token that starts at pos and ends before the nearest separator; pos
// moves past that separator. With no closing separator the result is empty
// and pos stays.
std::string NextToken(std::size_t& pos, std::string_view text, std::string_view separators);

// Keeps only the characters of text that stand in allowed.
std::string Filter(std::string_view text, std::string_view allowed);

// Removes every occurrence of c.
void RemoveChar(std::string& text, char c);

}  // namespace keldo::formula
