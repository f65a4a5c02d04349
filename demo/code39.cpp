#include "code39.h"

namespace juniva {
namespace {

struct Pattern {
  char character;
  std::string_view elements;
};

constexpr Pattern kPatterns[] = {
    {'0', "nnnwwnwnn"}, {'1', "wnnwnnnnw"}, {'2', "nnwwnnnnw"}, {'3', "wnwwnnnnn"}, {'4', "nnnwwnnnw"},
    {'5', "wnnwwnnnn"}, {'6', "nnwwwnnnn"}, {'7', "nnnwnnwnw"}, {'8', "wnnwnnwnn"}, {'9', "nnwwnnwnn"},
    {'A', "wnnnnwnnw"}, {'B', "nnwnnwnnw"}, {'C', "wnwnnwnnn"}, {'D', "nnnnwwnnw"}, {'E', "wnnnwwnnn"},
    {'F', "nnwnwwnnn"}, {'G', "nnnnnwwnw"}, {'H', "wnnnnwwnn"}, {'I', "nnwnnwwnn"}, {'J', "nnnnwwwnn"},
    {'K', "wnnnnnnww"}, {'L', "nnwnnnnww"}, {'M', "wnwnnnnwn"}, {'N', "nnnnwnnww"}, {'O', "wnnnwnnwn"},
    {'P', "nnwnwnnwn"}, {'Q', "nnnnnnwww"}, {'R', "wnnnnnwwn"}, {'S', "nnwnnnwwn"}, {'T', "nnnnwnwwn"},
    {'U', "wwnnnnnnw"}, {'V', "nwwnnnnnw"}, {'W', "wwwnnnnnn"}, {'X', "nwnnwnnnw"}, {'Y', "wwnnwnnnn"},
    {'Z', "nwwnwnnnn"}, {'-', "nwnnnnwnw"}};
constexpr std::string_view kStartAndStop = "nwnnwnwnn";

std::string_view elementsOf(char character) {
  for (const Pattern& pattern : kPatterns) {
    if (pattern.character == character) return pattern.elements;
  }
  return {};
}

}  // namespace

std::optional<std::string> code39Elements(std::string_view text) {
  std::string elements(kStartAndStop);
  for (char character : text) {
    const std::string_view pattern = elementsOf(character);
    if (pattern.empty()) return std::nullopt;
    elements += 'n';
    elements += pattern;
  }
  elements += 'n';
  elements += kStartAndStop;
  return elements;
}

std::string code39Svg(std::string_view text, int height) {
  constexpr int kNarrow = 2;
  constexpr int kWide = 5;
  constexpr int kQuietZone = 10 * kNarrow;
  const std::optional<std::string> elements = code39Elements(text);
  if (!elements) return {};
  std::string bars;
  int x = kQuietZone;
  bool isBar = true;
  for (char element : *elements) {
    const int width = element == 'w' ? kWide : kNarrow;
    if (isBar) {
      bars += "M" + std::to_string(x) + " 0h" + std::to_string(width) + "v" + std::to_string(height) + "h-" +
              std::to_string(width) + "z";
    }
    x += width;
    isBar = !isBar;
  }
  const std::string size = std::to_string(x + kQuietZone) + "\" height=\"" + std::to_string(height);
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + size + "\" viewBox=\"0 0 " +
         std::to_string(x + kQuietZone) + " " + std::to_string(height) +
         "\" shape-rendering=\"crispEdges\" role=\"img\" aria-label=\"Bar code\"><path fill=\"#000\" d=\"" +
         bars + "\"/></svg>";
}

}  // namespace juniva
