// Scenario lines word by word. A column counts from 1 at the line's first
// character, so that a message points where an editor does.
#include "host/scenario/words.h"

namespace toka_host {

bool Words::AtEnd() {
  SkipBlanks();
  return mAt >= mLine.size();
}

int Words::Column() {
  SkipBlanks();
  return (int)mAt + 1;
}

bool Words::Word(std::string& word, const std::string& what) {
  if (AtEnd()) return Fail("expected " + what);
  size_t start = mAt;
  while (mAt < mLine.size() && !IsBlank(mLine[mAt])) ++mAt;
  word = mLine.substr(start, mAt - start);
  mLastColumn = (int)start + 1;
  return true;
}

bool Words::Text(std::string& text, const std::string& what) {
  if (AtEnd() || mLine[mAt] != '"') return Expected(what);
  return Delimited('"', text, "unterminated string");
}

bool Words::Name(std::string& name, const std::string& what) {
  if (!AtEnd() && mLine[mAt] == '"') return Delimited('"', name, "unterminated string");
  return Word(name, what);
}

bool Words::Regex(std::string& regex) {
  if (AtEnd() || mLine[mAt] != '/') return Expected("a regular expression between slashes");
  int column = (int)mAt + 1;
  size_t at = mAt + 1;
  regex.clear();
  for (; at < mLine.size() && mLine[at] != '/'; ++at) {
    if (mLine[at] == '\\' && at + 1 < mLine.size() && mLine[at + 1] == '/') ++at;
    else if (mLine[at] == '\\' && at + 1 < mLine.size()) regex += mLine[at++];
    regex += mLine[at];
  }
  if (at >= mLine.size()) return FailAt(column, "unterminated regular expression");
  mAt = at + 1;
  mLastColumn = column;
  return true;
}

bool Words::End() {
  if (AtEnd()) return true;
  std::string word;
  int column = Column();
  Word(word, "");
  return FailAt(column, "unexpected \"" + word + "\"");
}

std::string Words::Peek() {
  size_t saved = mAt;
  int savedColumn = mLastColumn;
  std::string word;
  if (!AtEnd()) Word(word, "");
  mAt = saved;
  mLastColumn = savedColumn;
  return word;
}

bool Words::FailAt(int column, const std::string& message) {
  errorColumn = column;
  error = message;
  return false;
}

void Words::SkipBlanks() {
  while (mAt < mLine.size() && IsBlank(mLine[mAt])) ++mAt;
}

bool Words::Fail(const std::string& message) { return FailAt(Column(), message); }

// "expected WHAT", and what stands there instead when anything does.
bool Words::Expected(const std::string& what) {
  if (AtEnd()) return Fail("expected " + what);
  std::string word;
  int column = Column();
  Word(word, "");
  return FailAt(column, "expected " + what + ", found \"" + word + "\"");
}

// A text between two quote characters, with the escapes of a text; the
// column is the opening quote's.
bool Words::Delimited(char quote, std::string& text, const std::string& unterminated) {
  int column = (int)mAt + 1;
  text.clear();
  size_t at = mAt + 1;
  for (; at < mLine.size() && mLine[at] != quote; ++at) {
    if (mLine[at] != '\\' || at + 1 >= mLine.size()) {
      text += mLine[at];
      continue;
    }
    char next = mLine[++at];
    text += next == 'n' ? '\n' : next == 't' ? '\t' : next;
  }
  if (at >= mLine.size()) return FailAt(column, unterminated);
  mAt = at + 1;
  mLastColumn = column;
  return true;
}

}  // namespace toka_host
