#pragma once

#include <string>
#include <vector>

namespace Corvel {

/// Names that a person writes, against those that there are. All functions are pure.

/// How many single-character changes make one text the other (Levenshtein's distance).
int editDistance(const std::string& one, const std::string& other);

/// The text with letters of ASCII in lower case.
std::string lowered(std::string text);

/// The index of the name that is meant: `wanted` itself, else the only one that differs in letter case alone;
/// -1 for none.
int findName(const std::vector<std::string>& names, const std::string& wanted);

/// A text out of a file for one line of a message: control characters and what is no UTF-8 as "?", cut at
/// about `longest` bytes.
std::string printable(const std::string& text, std::size_t longest);

/// A name out of a file for a message, printable and in quotes.
std::string inQuotes(const std::string& name);

/// "a, b, c", each name once, of very many only the first ones; "none" where there are none.
std::string listed(const std::vector<std::string>& names);

/// What to say about a name that is not there: `; did you mean "beauty"?`, else nothing.
std::string guessFor(const std::vector<std::string>& names, const std::string& wanted);

}  // namespace Corvel
