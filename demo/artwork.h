// The pictures of the catalogue, painted in code. Each function gives one SVG element of 600 x 400 units; the
// same text at every call. The ids inside begin with a prefix of the picture's own, so that all may stand in
// one page.
#pragma once

#include <string>

namespace juniva::artwork {

std::string firstLight();
std::string clara();
std::string eveningSail();
std::string upAndAway();
std::string octoberLane();
std::string grandpaEmil();
std::string blueHour();
std::string northernNight();
std::string lavenderRows();

}  // namespace juniva::artwork
