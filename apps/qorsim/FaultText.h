// Damage to the text of a report.
#ifndef QORSIM_FAULTTEXT_H
#define QORSIM_FAULTTEXT_H

#include <string>

namespace qorsim {

void RemoveLastNewlines(std::string& text);
void UseCarriageReturns(std::string& text);
// Puts a NUL in place of every `distance`-th byte; `distance` is at least 1.
void PlaceNuls(std::string& text, size_t distance);
// Repeats the text, cut where it has `size` bytes. An empty text is repeated as a line feed.
void GrowTo(std::string& text, size_t size);
// Changes, inserts, removes and repeats bytes here and there. The same text and seed give the same
// result on every machine; a text that is not empty never stays as it is.
void Mutate(std::string& text, unsigned long seed);

}  // namespace qorsim

#endif  // QORSIM_FAULTTEXT_H
