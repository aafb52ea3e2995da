#include "formula/compiler.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "formula/formula_text.h"

namespace keldo::formula {
namespace {

constexpr double kPiLiteral = 3.14159265358979;
const std::string kLongLetters = "ABCMTUVWYZ";
const std::string kShortLetters = "ABCMTUVWZ";
const std::string kIndexLetters = "IJKNPQ";
constexpr char kSeparators[] = "\\=,";
constexpr std::size_t kLongestText = 20000;
constexpr long long kValueRestartLimit = 2000000;

bool Contains(const std::string& text, char c) { return text.find(c) != std::string::npos; }
bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

std::string Paren(char c) { return std::string("(") + c + ")"; }

int RoundToInt(double v) {
  const double r = std::nearbyint(v);
  if (!(r > -2147483648.0)) return -2147483647 - 1;
  if (!(r < 2147483647.0)) return 2147483647;
  return static_cast<int>(r);
}

std::string TrimBlanks(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  const std::size_t last = text.find_last_not_of(' ');
  return text.substr(first, last - first + 1);
}

// The opcode of an operator character, 0 for any other character.
int OperatorCode(char c) {
  switch (c) {
    case '^': return kOpPower;
    case '/': return kOpDivide;
    case '*': return kOpMultiply;
    case '-': return kOpSubtract;
    case '+': return kOpAdd;
    case '<': return kOpLess;
    case '>': return kOpGreater;
    case '=': return kOpEqual;
    case ch::kNotEqual: return kOpNotEqual;
    case ch::kAtMost: return kOpAtMost;
    case ch::kAtLeast: return kOpAtLeast;
    case ch::kAnd: return kOpAnd;
    case ch::kOr: return kOpOr;
    case ch::kNot: return kOpNot;
    default: return 0;
  }
}

bool IsFunction(char c) { return FunctionCharacters().find(c) != std::string_view::npos; }

// In the two-dimensional language the characters of G1 to G4 are variables.
constexpr std::string_view kGraphVariables = "@#%:";
bool IsFunctionIn(char c, bool twoDimensional) {
  return IsFunction(c) && !(twoDimensional && kGraphVariables.find(c) != std::string_view::npos);
}
bool IsNumberChar(char c) { return NumberCharacters().find(c) != std::string_view::npos; }

// Puts `mark` between every pair of neighbours (a, b) of the text for which
// `test` holds, from the pair that ends at `first` on. The pairs are those of
// the text before any mark went in, and the text is rebuilt once.
template <class Test>
void MarkBetween(std::string& text, char mark, std::size_t first, const Test& test) {
  std::string out;
  out.reserve(text.size() + text.size() / 4 + 4);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (i >= first && test(text[i - 1], text[i])) out.push_back(mark);
    out.push_back(text[i]);
  }
  text = std::move(out);
}

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// A function character typed by the user, followed by "(", means the function
// applied to that parenthesis. The function characters that passes write
// carry their own opening, so the typed ones are spelled out once, before any
// pass runs: "S(" becomes "SIN(" and "@(" becomes "@". An S or G that ends a
// word (ABS, COS, ACS, LOG, RANG) is left alone.
void ExpandTypedFunctions(std::string& text, bool twoDimensional) {
  const std::string_view opening = twoDimensional ? "?$;~" : "?$;~@#%:";
  std::string out;
  out.reserve(text.size() + 8);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool paren = i + 1 < text.size() && text[i + 1] == '(';
    const bool afterLetter = i > 0 && IsLetter(text[i - 1]);
    if (paren && !afterLetter && (c == 'S' || c == 's')) {
      out += "SIN";
    } else if (paren && !afterLetter && (c == 'G' || c == 'g')) {
      out += "GRI";
    } else if (paren && opening.find(c) != std::string_view::npos) {
      out.push_back(c);
      ++i;  // the character opens its own group
    } else {
      out.push_back(c);
    }
  }
  text = std::move(out);
}

}  // namespace

std::array<int, 12> BoundsOf(const FormulaState& state) {
  std::array<int, 12> bounds{};
  for (std::size_t k = 0; k < 6; ++k) {
    bounds[k] = state.lower[k];
    bounds[k + 6] = state.upper[k];
  }
  return bounds;
}

void BindEvaluator(Evaluator& ev, const FormulaState& state) {
  ev.formula = &state.compiled;
  ev.formType = state.formType;
  ev.order = state.order;
  ev.state = state.initialValues.data();
  ev.bounds = BoundsOf(state);
  ev.noiseTerms = state.noiseTerms;
  ev.single = state.twoDimensional;
}

double ScanNumber(const std::string& text) {
  std::size_t i = 0;
  std::string clean;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) clean.push_back(text[i++]);
  bool digits = false, point = false;
  while (i < text.size()) {
    const char c = text[i];
    if (c >= '0' && c <= '9') {
      digits = true;
      clean.push_back(c);
    } else if (c == '.' && !point) {
      point = true;
      clean.push_back(c);
    } else {
      break;
    }
    ++i;
  }
  if (!digits) return 0.0;
  if (i < text.size() && (text[i] == 'E' || text[i] == 'D' || text[i] == 'e' || text[i] == 'd')) {
    std::size_t j = i + 1;
    std::string exponent = "E";
    if (j < text.size() && (text[j] == '-' || text[j] == '+')) exponent.push_back(text[j++]);
    bool expDigits = false;
    while (j < text.size() && text[j] >= '0' && text[j] <= '9') {
      expDigits = true;
      exponent.push_back(text[j++]);
    }
    if (expDigits) clean += exponent;
  }
  return std::strtod(clean.c_str(), nullptr);
}

std::string NumberForFormula(double value) {
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.17G", value);
  std::string text = buffer;
  ReplaceAll(text, "E+", "E");
  ReplaceAll(text, "E-", "DDE");
  return text;
}

// ---------------------------------------------------------------- passes

void Compiler::RPRIMES(std::string& text) {
  for (char& c : text)
    if (c == '`') c = '\'';
  ReplaceAll(text, "\"", "''");
  for (int n = 9; n >= 1; --n) ReplaceAll(text, std::string(static_cast<std::size_t>(n), '\''), std::to_string(n));
}

void Compiler::CHSTAT(std::string& command) {
  const std::string text = "\\" + command + "\\";
  std::size_t pos = 1;
  for (;;) {
    const std::string token = FormulaUpper(NextToken(pos, text, "\\"));
    if (token.empty()) return;
    if (token == "DIFF" || token == "DIFFEQ") {
      s_.formType = 1;  // SetCp(2) is an empty hook
    } else if (token == "FORMULA" || token == "PLAIN") {
      s_.formType = 0;  // SetCp(1) is an empty hook
    } else if (token == "REC" || token == "RECURSIVE") {
      s_.formType = 2;
      command = kErrorResult;
      return;
    }
  }
}

void Compiler::FIRPASS(std::string& text) {
  const bool plane = s_.twoDimensional;
  if (plane) {
    // G1 to G4 are plain variables here, the samples of the stored graphs.
    static const char* kWordsG[4] = {"G1", "G2", "G3", "G4"};
    for (int g = 0; g < 4; ++g) ReplaceAll(text, kWordsG[g], Paren(kGraphVariables[static_cast<std::size_t>(g)]));
  }
  ReplaceAll(text, "D-", "DDE");
  ReplaceAll(text, "RANU(", "RAN(");
  ReplaceAll(text, "POINTS", "(" + std::to_string(host_.FormulaPoints()) + ")");
  ReplaceAll(text, "RECT(", std::string(1, ch::kRec));
  ReplaceAll(text, "E-", "DDE");
  ReplaceAll(text, "LN(", "LOG(");
  ReplaceAll(text, "><", "<>");
  ReplaceAll(text, "=<", "<=");
  ReplaceAll(text, "=>", ">=");
  ReplaceAll(text, "DELTA(", std::string(1, ch::kDeltaMark) + "(");
  ReplaceAll(text, "DEL(", std::string(1, ch::kDeltaMark) + "(");
  ReplaceAll(text, "RAN(", "RANDOM(");
  ReplaceAll(text, "E^", "EXP(1)^");
  // A typed pi, in either case.
  ReplaceAll(text, std::string(1, ch::kTypedPi), "PI");
  ReplaceAll(text, std::string(1, ch::kTypedPiUpper), "PI");
  ReplaceAll(text, "PI", Paren(ch::kPi));
  ReplaceAll(text, "SIGN(", "SGN(");
  ReplaceAll(text, "**", "*");
  ReplaceAll(text, "{", "(");
  ReplaceAll(text, "}", ")");
  ReplaceAll(text, "[", "(");
  ReplaceAll(text, "]", ")");
  ReplaceAll(text, "+-", "-");
  ReplaceAll(text, "-+", "-");
  ReplaceAll(text, "--", "+");
  ReplaceAll(text, "++", "+");
  if (plane) ReplaceAll(text, "TANH(", std::string(1, ch::kEntr));  // opcode 13 is TANH here
  static const std::pair<const char*, char> kWords[] = {
      {"EXP(", ch::kExp},   {"COS(", ch::kCos},     {"SIN(", ch::kSin},     {"SQR(", ch::kSqr},
      {"ABS(", ch::kAbs},   {"TAN(", ch::kTan},     {"ATN(", ch::kAtn},     {"LOG(", ch::kLog},
      {"SINC(", ch::kSinc}, {"SGN(", ch::kSgn},     {"SINH(", ch::kSinh},   {"COSH(", ch::kCosh},
      {"ENTR(", ch::kEntr}, {"REC(", ch::kRec},     {"GRI(", ch::kGri},     {"RANDOM(", ch::kRandom},
      {"NOT(", ch::kNotFn}, {"ACS(", ch::kAcs},     {"RANG(", ch::kRang},   {nullptr, ch::kDelta},
      {"FAC(", ch::kFac},   {"SUMI(", ch::kSumI},   {"SUMJ(", ch::kSumJ},   {"SUMK(", ch::kSumK},
      {"SUMN(", ch::kSumN}, {"PRODP(", ch::kProdP}, {"PRODQ(", ch::kProdQ}, {"BELL(", ch::kBell}};
  for (const auto& [word, c] : kWords) {
    if (word == nullptr) ReplaceAll(text, std::string(1, ch::kDeltaMark) + "(", std::string(1, c));
    else if (!(plane && c == ch::kEntr)) ReplaceAll(text, word, std::string(1, c));
  }
  if (plane) return;
  static const char kGraphs[5] = {ch::kG1, ch::kG2, ch::kG3, ch::kG4, ch::kG5};
  const int graphs = host_.FormulaGraphCount();
  for (int g = 0; g < 5 && g < graphs; ++g)
    ReplaceAll(text, "G" + std::to_string(g + 1) + "(", std::string(1, kGraphs[g]));
}

void Compiler::RandomTerms(std::string& command) {
  const std::string text = command + "\\";
  std::size_t pos = 0;
  for (;;) {
    const std::string token = NextToken(pos, text, "\\=");
    if (token.empty()) return;
    if (token != "NOISETERMS") continue;
    std::string value = NextToken(pos, text, "\\=");
    const double v = VALU(value);
    if (v > 32000.0) {
      host_.FormulaError(44);
      command = kErrorResult;
    } else if (v < 1.0) {
      host_.FormulaError(45);
      command = kErrorResult;
    } else {
      s_.noiseTerms = RoundToInt(v);
    }
    return;
  }
}

void Compiler::InsertLogicalTokens(std::string& text) {
  ReplaceAll(text, "<=", std::string(1, ch::kAtMost));
  ReplaceAll(text, ">=", std::string(1, ch::kAtLeast));
  ReplaceAll(text, "<>", std::string(1, ch::kNotEqual));
  ReplaceAll(text, "AND", std::string(1, ch::kAnd));
  ReplaceAll(text, "OR", std::string(1, ch::kOr));
  ReplaceAll(text, "NOT", std::string("(1)") + ch::kNot);
}

namespace {

bool IsComparator(char c) { return c == ch::kAtLeast || c == '<' || c == ch::kAtMost || c == '>'; }

// How a character moves the chain depth: "(" and function characters open,
// ")" and "&" close; everything else leaves it.
int ChainDepthStep(char c, bool twoDimensional) {
  if (c == '(' || IsFunctionIn(c, twoDimensional)) return 1;
  if (c == ')' || c == ch::kAnd) return -1;
  return 0;
}

// For each comparator of text, the comparator that its forward scan meets at
// its own depth before the depth falls below it; npos where there is none.
// One left-to-right sweep: a stack of comparators still waiting, deepest on
// top, is cut back whenever the depth falls.
std::vector<std::size_t> ChainPartners(const std::string& text, bool twoDimensional) {
  std::vector<std::size_t> partner(text.size(), std::string::npos);
  std::vector<std::pair<long, std::size_t>> waiting;  // (depth, position)
  long depth = 0;
  for (std::size_t k = 0; k < text.size(); ++k) {
    depth += ChainDepthStep(text[k], twoDimensional);
    while (!waiting.empty() && waiting.back().first > depth) waiting.pop_back();
    if (!IsComparator(text[k])) continue;
    if (!waiting.empty() && waiting.back().first == depth) {
      partner[waiting.back().second] = k;
      waiting.pop_back();
    }
    waiting.emplace_back(depth, k);
  }
  return partner;
}

}  // namespace

// The rule works on the text as it grows: at comparator i with partner j the
// middle m = text(i+1 .. j-1) is doubled into "m&m" and the scan goes on at
// i+1. Every comparator inside m is deeper than i, so its own scan ends
// inside its copy of m: each copy expands exactly as m does alone, and the
// scan then reaches j unchanged. That lets the expansion be built in one pass
// over the typed text, each middle expanded once and copied, instead of
// rescanning the growing text from every comparator. The text only grows, so
// the first output past the length limit already decides the outcome: the
// expansion stops there and the caller refuses the text.
void Compiler::DINEQ(std::string& text, bool twoDimensional) {
  if (text.size() > kLongestText) return;
  const std::vector<std::size_t> partner = ChainPartners(text, twoDimensional);
  struct Segment {
    std::size_t pos, end, outStart;
  };
  std::string out;
  out.reserve(text.size() + 16);
  std::vector<Segment> open{{0, text.size(), 0}};
  while (!open.empty() && out.size() <= kLongestText) {
    Segment& seg = open.back();
    if (seg.pos == seg.end) {
      const std::size_t start = seg.outStart, length = out.size() - start, resume = seg.end;
      open.pop_back();
      if (open.empty()) break;
      // The middle's expansion stands once in out; write "&" and its copy.
      out.reserve(out.size() + length + 1);
      out.push_back(ch::kAnd);
      out.append(out.data() + start, length);
      open.back().pos = resume;
      continue;
    }
    const std::size_t i = seg.pos;
    out.push_back(text[i]);
    if (IsComparator(text[i]) && partner[i] < seg.end) {
      seg.pos = i;  // the parent resumes at the partner once the middle is done
      open.push_back({i + 1, partner[i], out.size()});
    } else {
      seg.pos = i + 1;
    }
  }
  text = std::move(out);
}

void Compiler::PARVALI(std::string& text, std::string& command, bool& found) {
  found = false;
  std::string c = command + "\\" + ch::kGuard;
  ReplaceAll(c, "<=", "<|");
  ReplaceAll(c, "=<", "|<");
  ReplaceAll(c, ">=", ">|");
  const std::string& letters = s_.formType == 0 && !s_.twoDimensional ? kLongLetters : kShortLetters;
  std::size_t pos = 0;
  for (;;) {
    const std::string token = NextToken(pos, c, kSeparators);
    if (token.empty()) return;
    if (token.size() != 1 || !Contains(letters, token[0]) || !Contains(text, token[0])) continue;
    std::string value = "(" + NextToken(pos, c, kSeparators) + ")";
    ReplaceAll(value, "<|", "<=");
    ReplaceAll(value, "|<", "=<");
    ReplaceAll(value, ">|", ">=");
    // One sweep: a value may hold its own letter, and the pass limit of the
    // compiler then ends the substitution.
    ReplaceEach(text, token, value);
    found = true;
    // A letter becomes a bracket at least, so the text never shrinks here:
    // past the length limit the next pass refuses it whatever follows, and
    // further letters of the command would only multiply it.
    if (text.size() > kLongestText) return;
  }
}

bool Compiler::PARVAL(std::string& text, const std::string& marks) {
  // A mark beyond the short set names no letter: nothing can be asked.
  for (std::size_t k = 0; k < marks.size(); ++k)
    if (marks[k] == 'Y' && k >= kShortLetters.size()) return false;
  std::array<std::string, 9> answers;
  for (std::size_t k = 0; k < marks.size(); ++k) {
    if (marks[k] != 'Y') continue;
    const char letter = kShortLetters[k];
    s_.stateFlag = 'P';
    const std::optional<std::string> reply =
        host_.FormulaPrompt("Enter the value of " + FormulaLower(std::string(1, letter)) + ".", "Parameter value needed.");
    s_.stateFlag = 'N';
    std::string answer = reply ? ToFormulaText(*reply) : std::string();
    if (answer.empty() || answer == std::string(1, ch::kCancel) || answer == std::string(1, ch::kCancelLower))
      return false;
    RemoveChar(answer, ' ');
    answers[k] = answer;
  }
  for (std::size_t k = 0; k < marks.size(); ++k)
    if (marks[k] == 'Y') ReplaceEach(text, std::string(1, kShortLetters[k]), "(" + answers[k] + ")");
  return true;
}

void Compiler::THRPASS(std::string& text) {
  for (int k = 0; k <= 9; ++k) {
    const std::string find = "Y" + std::to_string(k);
    if (!Contains(text, find)) continue;
    ReplaceAll(text, find, Paren(ch::kY[k]));
    s_.order = k + 1;
  }
  // In the two-dimensional language a bare Y is the variable.
  if (!s_.twoDimensional && Contains(text, 'Y')) {
    ReplaceAll(text, "Y", Paren(ch::kY[0]));
    if (s_.order < 1) s_.order = 1;
  }
}

void Compiler::FTHPAS(std::string& text) {
  if (!Contains(text, 'F')) return;
  ReplaceAll(text, "F", Paren(ch::kF[0]));
  s_.iterationMark = 1;
}

void Compiler::VSPTK(int index, int lo, int hi) {
  if (lo > hi) std::swap(lo, hi);
  s_.lower[static_cast<std::size_t>(index)] = lo;
  s_.upper[static_cast<std::size_t>(index)] = hi;
}

void Compiler::SPTKN(std::string& text, const std::string& command, bool& failed, bool& allowP) {
  static const char kSums[6] = {ch::kSumI, ch::kSumJ, ch::kSumK, ch::kSumN, ch::kProdP, ch::kProdQ};
  bool marked[6] = {};
  for (int s = 0; s < 6; ++s) {
    const std::size_t first = text.find(kSums[s]);
    if (first == std::string::npos) continue;
    if (text.find(kSums[s], first + 1) != std::string::npos) {
      TMSP(s + 1);
      failed = true;
    } else {
      marked[s] = true;
    }
  }
  allowP = marked[4];
  const std::string c = command + "\\";
  for (int s = 0; s < 6; ++s) {
    if (!marked[s]) continue;
    std::size_t pos = 0;
    for (;;) {
      const std::string token = NextToken(pos, c, kSeparators);
      if (token.empty()) break;
      if (token != std::string(1, kIndexLetters[static_cast<std::size_t>(s)])) continue;
      std::string loText = NextToken(pos, c, kSeparators);
      std::string hiText = NextToken(pos, c, kSeparators);
      const int lo = RoundToInt(VALU(loText));
      const int hi = RoundToInt(VALU(hiText));
      VSPTK(s, lo, hi);
      marked[s] = false;
      break;
    }
  }
  for (bool m : marked) {
    if (m) {
      host_.FormulaError(12);
      failed = true;
      return;
    }
  }
}

void Compiler::INSHV(std::string& text) {
  if (!Contains(text, 'H')) return;
  ReplaceAll(text, "H",
             "(" + NumberForFormula(host_.FormulaIntervalLength()) + "/" + std::to_string(host_.FormulaPoints()) + ")");
}

// --------------------------------------------------------------- compile

void Compiler::COMPILE(int mode, const std::string& typed, std::string& command) {
  std::string text = ToFormulaText(mode == kModeValue ? s_.valueText : typed);
  RemoveChar(text, ch::kLeftQuote);
  RPRIMES(text);
  ExpandTypedFunctions(text, s_.twoDimensional);
  command.clear();
  for (int pass = 1;; ++pass) {
    if (pass > 60) {
      command = kErrorResult;
      return;
    }
    // Values that hold their own letters can double the text on every pass;
    // such a text is no formula anyone typed.
    if (text.size() > kLongestText) {
      command = kErrorResult;
      return;
    }
    text = FormulaUpper(TrimBlanks(text));
    if (text.empty()) text = "0";
    RemoveChar(text, ' ');
    RemoveChar(text, '\n');
    RemoveChar(text, '\r');
    if (text.empty()) text = "0";
    std::string formula, cmd;
    const std::size_t slash = text.find('\\');
    if (slash == std::string::npos) {
      formula = text;
    } else {
      formula = text.substr(0, slash);
      cmd = text.substr(slash + 1);
    }
    if (mode != kModeValue) {
      CHSTAT(cmd);
      if (cmd == kErrorResult) {
        s_.formType = 1;
        command = cmd;
        return;
      }
    }
    // The correction hook for these is empty: the compile would restart for
    // ever, so it ends here.
    if (Contains(formula, ch::kBar179) || Contains(formula, '|') || Contains(formula, '\\')) {
      command = kErrorResult;
      return;
    }
    if (formula == "X") formula = "0+X";
    FIRPASS(formula);
    FIRPASS(cmd);
    RandomTerms(cmd);
    if (cmd == kErrorResult) {
      command = cmd;
      return;
    }
    InsertLogicalTokens(formula);
    DINEQ(formula, s_.twoDimensional);
    if (formula.size() > kLongestText) {
      command = kErrorResult;
      return;
    }
    s_.order = 0;
    bool found = false;
    PARVALI(formula, cmd, found);
    if (found) {
      text = formula + "\\" + cmd;
      continue;
    }
    const std::string& letters = s_.formType == 0 && !s_.twoDimensional ? kLongLetters : kShortLetters;
    std::string marks(letters.size(), 'N');
    bool any = false;
    for (std::size_t k = 0; k < letters.size(); ++k) {
      if (Contains(formula, letters[k])) {
        marks[k] = 'Y';
        any = true;
      }
    }
    if (any) {
      if (!PARVAL(formula, marks)) {
        command = kErrorResult;
        return;
      }
      text = formula + "\\" + cmd;
      continue;
    }
    s_.order = s_.formType == 0 ? 0 : 1;
    THRPASS(formula);
    s_.iterationMark = 0;
    if (mode != kModeValue) FTHPAS(formula);
    if (s_.iterationMark != 0) {
      command = kErrorResult;
      return;
    }
    s_.stateFlag = 'S';
    bool failed = false, allowP = false;
    SPTKN(formula, cmd, failed, allowP);
    s_.stateFlag = 'N';
    if (failed) {
      command = kErrorResult;
      return;
    }
    INSHV(formula);
    formula.insert(formula.begin(), '(');
    if (!COMBG(formula, allowP)) {
      command = kErrorResult;
      return;
    }
    command = cmd;
    return;
  }
}

bool Compiler::COMBG(std::string t, bool allowP) {
  const bool plane = s_.twoDimensional;
  const auto isFunction = [plane](char c) { return IsFunctionIn(c, plane); };
  // Unary signs: a sign after "(" or a function character gets a 0 before it.
  MarkBetween(t, '0', 1, [&](char a, char b) { return (b == '+' || b == '-') && (a == '(' || isFunction(a)); });
  // Implied multiplication.
  // The two-dimensional sets read Y after X and the graph variables last.
  const std::string states(StateCharacters());
  const std::string y = plane ? "Y" : "", graphs = plane ? std::string(kGraphVariables) : "";
  const std::string setA = ".X" + y + ")IJKNPQ" + states + std::string(NumberCharacters()) + graphs;
  const std::string setB = "X" + y + "(IJKNPQ" + states + std::string(FunctionCharacters()) + graphs;
  const std::string setC = ")X" + y + "IJKNPQ" + states + graphs;
  if (t != "(X" + y + "IJKNPQ" + states + graphs) {
    MarkBetween(t, '*', 1, [&](char a, char b) { return Contains(setA, a) && Contains(setB, b); });
    MarkBetween(t, '*', 2, [&](char a, char b) { return Contains(setC, a) && (b == '.' || IsNumberChar(b)); });
  }
  // Depth map: a group's opening character carries the inner depth, its
  // closing ")" the outer one.
  std::vector<int> map(t.size(), 0);
  int depth = 0, deepest = 0;
  bool negative = false;
  for (std::size_t i = 1; i < t.size(); ++i) {
    if (t[i] == '(' || isFunction(t[i])) ++depth;
    else if (t[i] == ')') --depth;
    if (depth < 0) negative = true;
    map[i] = depth;
    deepest = std::max(deepest, depth);
  }
  if (depth != 0 || negative) return false;
  const std::size_t p = t.find('P');
  if (p != std::string::npos && p + 1 != t.size() && !allowP) return false;

  // A group is the run of characters of one depth from its opening character
  // to its closing ")", with the deeper groups inside it taken out (each of
  // them leaves its ")" behind as an operand). One pass sorts every character
  // into the group it belongs to; the groups of a depth stand left to right.
  std::vector<std::vector<std::string>> groupsAt(static_cast<std::size_t>(deepest) + 1);
  std::vector<int> closersAt(static_cast<std::size_t>(deepest) + 1, 0);
  groupsAt[0].emplace_back(t.empty() ? std::string() : std::string(1, t[0]));
  for (std::size_t i = 1; i < t.size(); ++i) {
    const auto level = static_cast<std::size_t>(map[i]);
    if (t[i] == ')') ++closersAt[level];
    std::vector<std::string>& at = groupsAt[level];
    if (level > 0 && (t[i] == '(' || isFunction(t[i]))) at.emplace_back();
    at.back().push_back(t[i]);
  }

  CompiledFormula out;
  out.pool.reserve(t.size() + 2);
  out.pool.push_back(0.0);  // entry 0 is unused
  int maxGroups = 1;
  for (int level = 0; level < deepest; ++level) maxGroups = std::max(maxGroups, closersAt[static_cast<std::size_t>(level)]);
  std::vector<std::int32_t>& prog = out.program;
  prog.reserve(9 * t.size() + 2 * static_cast<std::size_t>(deepest) + 16);
  prog.assign(4, 0);
  prog[2] = deepest;
  prog[3] = maxGroups;
  int maxOps = 0;
  const std::string fnChars = "(" + std::string(FunctionCharacters());
  std::vector<int> ops;
  std::vector<std::string> operands;
  const std::string none;
  for (int level = deepest; level >= 0; --level) {
    const int groups = level > 0 ? closersAt[static_cast<std::size_t>(level) - 1] : 1;
    const std::vector<std::string>& found = groupsAt[static_cast<std::size_t>(level)];
    prog.push_back(groups);
    for (int g = 0; g < groups; ++g) {
      const std::string& group = static_cast<std::size_t>(g) < found.size() ? found[static_cast<std::size_t>(g)] : none;
      ops.clear();
      operands.assign(1, std::string());
      for (std::size_t i = 1; i < group.size(); ++i) {
        const int code = OperatorCode(group[i]);
        if (code != 0) {
          ops.push_back(code);
          operands.emplace_back();
        } else {
          operands.back().push_back(group[i]);
        }
      }
      const int nOps = static_cast<int>(ops.size());
      maxOps = std::max(maxOps, nOps);
      prog.push_back(nOps);
      const std::size_t fn = group.empty() ? 0 : fnChars.find(group[0]);
      prog.push_back(fn == std::string::npos ? 0 : static_cast<std::int32_t>(fn));
      const auto operandCode = [&](const std::string& operand) -> std::int32_t {
        const char c = operand.empty() ? '\0' : operand[0];
        if (c == 'X') return kOperandX;
        if (plane && c == 'Y') return kOperandY;
        if (plane && c != '\0') {
          if (const std::size_t g = kGraphVariables.find(c); g != std::string_view::npos)
            return kOperandGraph + static_cast<std::int32_t>(g);
        }
        if (c == ')') return kOperandGroup;
        if (const std::size_t k = kIndexLetters.find(c); c != '\0' && k != std::string::npos)
          return kOperandIndex + static_cast<std::int32_t>(k);
        if (c != '\0') {
          for (int k = 0; k < 10; ++k)
            if (c == ch::kY[k]) return kOperandState + k;
          for (int k = 0; k < 5; ++k)
            if (c == ch::kF[k]) return kOperandSlot + k;
        }
        out.pool.push_back(VALUQ(operand, plane));
        return kOperandNumber;
      };
      prog.push_back(operandCode(operands[0]));
      for (int k = 0; k < nOps; ++k) {
        prog.push_back(ops[static_cast<std::size_t>(k)]);
        prog.push_back(operandCode(operands[static_cast<std::size_t>(k) + 1]));
      }
      if (nOps > 0) {
        for (int code = kOpPower; code >= kOpNot; --code)
          for (int k = 0; k < nOps; ++k)
            if (ops[static_cast<std::size_t>(k)] == code) prog.push_back(k + 1);
      }
    }
  }
  prog[1] = maxOps;
  prog[0] = 0;
  s_.compiled = std::move(out);
  return true;
}

double Compiler::VALUQ(std::string text, bool twoDimensional) {
  ReplaceAll(text, "DDE", twoDimensional ? "E-" : "D-");
  if (text == std::string(1, ch::kPi) || text == "PI") return kPiLiteral;
  if (text.size() > 1 && text.compare(text.size() - 2, 2, "PI") == 0) {
    text.erase(text.size() - 2);
    text.push_back(ch::kPi);
  }
  if (const std::size_t p = text.find('P'); p != std::string::npos) {
    text.erase(p);
    text.push_back(ch::kPi);
  }
  text = TrimBlanks(text);
  const double value = ScanNumber(Filter(text, "01234567890.-ED,"));
  if (!Contains(text, '!')) return value;
  const double n = std::nearbyint(ScanNumber(Filter(text, "01234567890.-ED,!")));
  if (!(n >= 0.0 && n <= 70.0)) return -1.0;
  return FactorialTable()[static_cast<std::size_t>(n)];
}

// ------------------------------------------------------------------ values

double Compiler::VALU(std::string& text) {
  s_.valueText = text;
  std::string command;
  COMPILE(kModeValue, "", command);
  Evaluator ev;
  BindEvaluator(ev, s_);
  ev.dx = 0.0;
  // A number field must answer at once: a sum over millions of terms counts
  // as a fault there, not as a program that stops responding. The bound is
  // on work, restarts times the program's length, so that a long program
  // over a long sum gives up as soon as a short one does.
  const long long words = std::max<long long>(1, static_cast<long long>(s_.compiled.program.size()));
  ev.restartBudget = std::clamp(valueWorkBudget / words, 1LL, kValueRestartLimit);
  ev.random = host_.FormulaRandom();
  ev.graphs = host_.FormulaGraphs();
  ev.Prepare();
  const double value = s_.twoDimensional ? ev.Eval2(0, 0, 0.0, 0.0) : ev.Eval(0, 0.0);
  if (ev.fault() != kNoFault) {
    text = kValueFailure;
    s_.valueFault = -12;
    return 0.0;
  }
  return value;
}

void Compiler::GIVAL(std::string& error, const std::string& command) {
  (void)error;
  std::string text = "CSTR\\" + command + "\\";
  ReplaceAll(text, "\\Y=", "\\Y0=");
  const int needed = s_.order;
  int asked = needed;
  std::size_t pos = 0;
  for (;;) {
    const std::string token = NextToken(pos, text, kSeparators);
    if (token.empty()) break;
    if (token != "ORDER" && token != "ORD") continue;
    std::string value = NextToken(pos, text, kSeparators);
    const int v = RoundToInt(VALU(value));
    if (v >= needed && v <= 10) asked = v;
    break;
  }
  int finds = 0;
  for (int k = 0; k <= 10; ++k) {
    const std::string key = "\\Y" + std::to_string(k) + "=";
    const std::size_t at = text.find(key);
    if (at == std::string::npos) continue;
    const std::size_t start = at + key.size();
    const std::size_t end = text.find_first_of(kSeparators, start);
    std::string value = text.substr(start, end == std::string::npos ? std::string::npos : end - start);
    if (!Contains(value, 'F')) s_.initialValues[static_cast<std::size_t>(k)] = VALU(value);
    ++finds;
  }
  // A count that is neither the order nor 0 is refused silently: the state
  // keeps what was stored.
  if (finds == 0)
    for (int k = 0; k < asked && k <= 10; ++k) s_.initialValues[static_cast<std::size_t>(k)] = VALU(std::string("0"));
  s_.order = asked;
}

}  // namespace keldo::formula
