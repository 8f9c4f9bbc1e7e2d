// The words of one scenario line: bare words, texts in double quotes and
// regular expressions between slashes, read from left to right, with the
// column of every word for the messages about a line that does not parse.
#ifndef TOKA_HOST_SCENARIO_WORDS_H
#define TOKA_HOST_SCENARIO_WORDS_H

#include <cstddef>
#include <string>

namespace toka_host {

// Reads the words of one line, which must outlive it. Each reader returns
// false after setting the error and the column it is about.
class Words {
public:
  explicit Words(const std::string& line) : mLine(line) {}

  std::string error;
  int errorColumn = 0;

  bool AtEnd();
  int Column();  // of the next word

  // The next word, whatever it is.
  bool Word(std::string& word, const std::string& what);
  // A text in double quotes, with \" \\ \n and \t inside.
  bool Text(std::string& text, const std::string& what);
  // A text in double quotes, or a single word.
  bool Name(std::string& name, const std::string& what);
  // A regular expression between slashes; \/ stands for a slash.
  bool Regex(std::string& regex);
  // Nothing left on the line.
  bool End();

  // The word at the cursor without taking it.
  std::string Peek();
  int LastColumn() const { return mLastColumn; }  // of the word taken last
  bool FailAt(int column, const std::string& message);

private:
  static bool IsBlank(char c) { return c == ' ' || c == '\t'; }
  void SkipBlanks();
  bool Fail(const std::string& message);
  bool Expected(const std::string& what);
  bool Delimited(char quote, std::string& text, const std::string& unterminated);

  const std::string& mLine;
  size_t mAt = 0;
  int mLastColumn = 1;
};

}  // namespace toka_host

#endif
