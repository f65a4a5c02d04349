#include <cmath>

#include "artwork.h"
#include "svg_canvas.h"

namespace juniva::artwork {

std::string firstLight() {
  SvgCanvas canvas("fl");
  Chance chance(11);
  canvas.background(canvas.verticalGradient(
      {{0, "#3a4474"}, {0.3, "#8f6a92"}, {0.48, "#e58f7c"}, {0.6, "#fbc98a"}, {1, "#ffe6b8"}}));
  canvas.background(canvas.radialGradient({395, 205}, 260,
                                          {{0, "#fff1cf", 0.95}, {0.25, "#ffd79a", 0.6}, {1, "#ffb37a", 0}}));
  canvas.circle({395, 205}, 31, "#fff8e6");
  for (int cloud = 0; cloud < 7; ++cloud) {
    const double y = 40 + cloud * 19 + chance.between(-8, 8);
    canvas.ellipse({chance.between(40, 560), y}, chance.between(70, 170), chance.between(2.5, 6), "#ffd9c2",
                   "opacity=\".34\"");
  }
  canvas.ridge(chance, 232, 26, 0.85, 400,
               canvas.verticalGradient({{0, "#c98193"}, {1, "#f2b796"}}, 190, 300));
  canvas.ridge(chance, 258, 30, 0.8, 400,
               canvas.verticalGradient({{0, "#a2647f"}, {1, "#e29d8b"}}, 215, 330));
  canvas.ridge(chance, 292, 34, 0.7, 400,
               canvas.verticalGradient({{0, "#744b70"}, {1, "#b97681"}}, 245, 370));
  canvas.ridge(chance, 326, 26, 0.6, 400,
               canvas.verticalGradient({{0, "#4a3559"}, {1, "#83536f"}}, 285, 400));
  canvas.ridge(chance, 366, 18, 0.4, 400, "#2a2140");
  for (int tree = 0; tree < 30; ++tree) {
    const double x = 8 + tree * 20.4 + chance.between(-9, 9);
    const bool inTheGap = x > 300 && x < 450;
    canvas.fir(chance, {x, 406}, (inTheGap ? 26 : 48) + chance.between(0, 34), "#17132a");
  }
  return canvas.finish();
}

std::string eveningSail() {
  SvgCanvas canvas("es");
  Chance chance(5);
  canvas.background(canvas.verticalGradient(
      {{0, "#263a63"}, {0.28, "#7d5680"}, {0.47, "#ea7c5b"}, {0.6, "#ffc26b"}, {1, "#ffc26b"}}));
  canvas.background(canvas.radialGradient({250, 238}, 230,
                                          {{0, "#fff0b8", 0.95}, {0.3, "#ffcf70", 0.55}, {1, "#ff9d5c", 0}}));
  for (int cloud = 0; cloud < 9; ++cloud) {
    const double y = 34 + cloud * 20 + chance.between(-6, 6);
    canvas.ellipse({chance.between(0, 600), y}, chance.between(60, 190), chance.between(2, 7),
                   cloud < 5 ? "#f2a08c" : "#ffe0a6", "opacity=\".38\"");
  }
  canvas.circle({250, 238}, 50, "#fff6d8");
  canvas.rectangle(0, 246, 600, 154,
                   canvas.verticalGradient(
                       {{0, "#e8875a"}, {0.2, "#a95c66"}, {0.6, "#4f4468"}, {1, "#24294a"}}, 246, 400));
  canvas.ridge(chance, 247, 5, 0.2, 250, "#8d5066");
  for (int glint = 0; glint < 64; ++glint) {
    const double depth = chance.between(0, 1);
    const double y = 250 + 148 * depth * depth;
    const double spread = 26 + 90 * depth;
    const double width = 8 + 46 * depth * chance.between(0.3, 1);
    canvas.ellipse({250 + chance.between(-spread, spread) * chance.between(0.1, 1), y}, width,
                   0.9 + 1.7 * depth, "#ffe1a0", "opacity=\".6\"");
  }
  for (int wave = 0; wave < 40; ++wave) {
    const double depth = chance.between(0.1, 1);
    canvas.ellipse({chance.between(0, 600), 252 + 146 * depth}, 14 + 50 * depth, 0.8 + 1.4 * depth, "#1d2447",
                   "opacity=\".28\"");
  }
  canvas.path("M418 122 L418 276 L344 276 C378 232 404 180 418 122Z", "#fdf3e3");
  canvas.path("M418 122 L418 276 L392 276 C410 226 416 176 418 122Z", "#e9cfb4");
  canvas.path("M424 142 C448 188 466 236 474 276 L424 276Z", "#f6dcbc");
  canvas.line("M421 112 L421 292", "#3a2430", 4);
  canvas.path("M334 284 L492 284 C486 302 472 312 452 312 L366 312 C350 312 340 300 334 284Z", "#432634");
  canvas.path("M334 284 L492 284 L490 290 L337 290Z", "#f4e6d4");
  canvas.ellipse({413, 317}, 84, 4, "#1a1f3d", "opacity=\".55\"");
  for (const Point bird : {Point{120, 92}, Point{152, 78}, Point{176, 100}}) {
    std::string wings = "M" + svgNumber(bird.x) + " " + svgNumber(bird.y);
    wings += "q8 -9 13 0q6 -9 14 -1";
    canvas.line(wings, "#2d2746", 2.6);
  }
  return canvas.finish();
}

namespace {

// Narrower ellipses of the same height over each other look like the gores of an envelope.
void paintBalloon(SvgCanvas& canvas, Point centre, double size, std::string_view one, std::string_view two) {
  const double width = size * 0.5;
  const double height = size * 0.54;
  const std::string x = svgNumber(centre.x);
  const auto envelope = [&](double half, std::string_view fill, std::string_view extra) {
    const std::string top = svgNumber(centre.y - height);
    const std::string low = svgNumber(centre.y + height * 1.12);
    const std::string shoulder = svgNumber(centre.y - height);
    const std::string waist = svgNumber(centre.y + height * 0.42);
    const std::string path =
        "M" + x + " " + top + "C" + svgNumber(centre.x + half * 1.34) + " " + shoulder + " " +
        svgNumber(centre.x + half * 1.3) + " " + waist + " " + svgNumber(centre.x + half * 0.2) + " " + low +
        "L" + svgNumber(centre.x - half * 0.2) + " " + low + "C" + svgNumber(centre.x - half * 1.3) + " " +
        waist + " " + svgNumber(centre.x - half * 1.34) + " " + shoulder + " " + x + " " + top + "Z";
    canvas.path(path, fill, extra);
  };
  canvas.line("M" + svgNumber(centre.x - width * 0.17) + " " + svgNumber(centre.y + height) + "L" +
                  svgNumber(centre.x - width * 0.12) + " " + svgNumber(centre.y + height * 1.42) + "M" +
                  svgNumber(centre.x + width * 0.17) + " " + svgNumber(centre.y + height) + "L" +
                  svgNumber(centre.x + width * 0.12) + " " + svgNumber(centre.y + height * 1.42),
              "#5b4636", 1.2);
  envelope(width, one, {});
  envelope(width * 0.74, two, {});
  envelope(width * 0.46, one, {});
  envelope(width * 0.17, two, {});
  envelope(width,
           canvas.horizontalGradient({{0, "#fff6dc", 0.42}, {0.45, "#ffffff", 0}, {1, "#5a1f30", 0.34}},
                                     centre.x - width, centre.x + width),
           {});
  canvas.rectangle(centre.x - width * 0.15, centre.y + height * 1.4, width * 0.3, width * 0.22, "#7a4f2c",
                   "rx=\"2\"");
}

}  // namespace

std::string upAndAway() {
  SvgCanvas canvas("ua");
  Chance chance(23);
  canvas.background(
      canvas.verticalGradient({{0, "#6fb4dc"}, {0.45, "#b9dcea"}, {0.72, "#fdeccb"}, {1, "#fdeccb"}}));
  canvas.background(canvas.radialGradient({520, 250}, 300, {{0, "#fff3c9", 0.9}, {1, "#ffe3a5", 0}}));
  for (const Point cloud : {Point{90, 88}, Point{470, 62}, Point{330, 176}}) {
    for (int puff = 0; puff < 6; ++puff) {
      canvas.ellipse({cloud.x + puff * 21 - 50, cloud.y + chance.between(-7, 5)}, chance.between(20, 33),
                     chance.between(9, 16), "#ffffff", "opacity=\".62\"");
    }
  }
  canvas.ridge(chance, 300, 16, 0.5, 400,
               canvas.verticalGradient({{0, "#8fb1b5"}, {1, "#c7d6bd"}}, 270, 360));
  canvas.ridge(chance, 322, 18, 0.1, 400,
               canvas.verticalGradient({{0, "#86a75e"}, {1, "#b9c873"}}, 290, 390));
  canvas.ridge(chance, 352, 16, 0.05, 400,
               canvas.verticalGradient({{0, "#5f8a45"}, {1, "#86a84f"}}, 325, 400));
  for (int tree = 0; tree < 26; ++tree) {
    const double x = chance.between(0, 600);
    canvas.ellipse({x, 352 + chance.between(0, 14)}, chance.between(5, 11), chance.between(6, 11), "#45703a",
                   "opacity=\".85\"");
  }
  canvas.ridge(chance, 386, 10, 0, 400, "#3f6a35");
  paintBalloon(canvas, {84, 222}, 62, "#7a4a8c", "#f1c3d4");
  paintBalloon(canvas, {520, 176}, 84, "#1f7f86", "#fbe7c0");
  paintBalloon(canvas, {402, 254}, 48, "#d8702d", "#fff0d0");
  paintBalloon(canvas, {236, 132}, 176, "#d2452f", "#ffce57");
  return canvas.finish();
}

std::string octoberLane() {
  SvgCanvas canvas("ol");
  Chance chance(77);
  constexpr std::string_view kLeaves[] = {"#e0791f", "#c9501c", "#f2a52c", "#b83a1b", "#f7c548", "#d9642a"};
  const auto anyLeaf = [&] { return kLeaves[static_cast<int>(chance.between(0, 5.99))]; };
  canvas.background(canvas.verticalGradient({{0, "#f0b955"}, {0.5, "#fde9b4"}, {1, "#fbe0a0"}}));
  canvas.background(
      canvas.radialGradient({300, 214}, 250, {{0, "#fffbe6"}, {0.4, "#fff0bf", 0.8}, {1, "#f9c46b", 0}}));
  canvas.ridge(chance, 238, 12, 0.3, 290,
               canvas.horizontalGradient({{0, "#d58a3a"}, {0.5, "#fbe3a6"}, {1, "#d58a3a"}}));
  canvas.rectangle(0, 258, 600, 142,
                   canvas.verticalGradient({{0, "#e6b25c"}, {0.4, "#bf722f"}, {1, "#7a3c1c"}}, 254, 400));
  canvas.path("M292 252 L308 252 C330 300 400 350 470 400 L130 400 C200 350 270 300 292 252Z",
              canvas.verticalGradient({{0, "#fff1c8"}, {0.4, "#e4bd85"}, {1, "#a9764c"}}, 250, 400));
  // From far to near: the nearer a pair of trees, the larger and the further from the middle.
  for (int row = 0; row < 6; ++row) {
    const double near = (row + 1) / 6.0;
    const double reach = 26 + 262 * near * near;
    const double foot = 256 + 130 * near * near;
    const double thick = 3 + 25 * near * near;
    for (const double side : {-1.0, 1.0}) {
      const double x = 300 + side * reach;
      const std::string_view bark = row < 2 ? "#a97b55" : row < 4 ? "#6f452c" : "#42271b";
      canvas.polygon({{x - thick * 0.62, foot},
                      {x - thick * 0.36, foot - 60 * near},
                      {x - thick * 0.3, 0},
                      {x + thick * 0.3, 0},
                      {x + thick * 0.36, foot - 60 * near},
                      {x + thick * 0.62, foot}},
                     bark);
      for (int clump = 0; clump < 9; ++clump) {
        std::vector<Point> leaves;
        for (int leaf = 0; leaf < 9; ++leaf) {
          const double away = chance.between(-1, 1);
          const double top = 128 - 190 * near;
          const double low = 226 - 62 * near - 34 * near * away * away;
          leaves.push_back({x + away * (34 + 104 * near), chance.between(top, low)});
        }
        canvas.dots(leaves, (9 + 20 * near) * chance.between(0.55, 1.15), anyLeaf(),
                    row < 2 ? "opacity=\".6\"" : "opacity=\".8\"");
      }
    }
  }
  for (int leaf = 0; leaf < 70; ++leaf) {
    const double depth = chance.between(0.05, 1);
    canvas.ellipse({chance.between(0, 600), 262 + 138 * depth}, 2 + 6 * depth, 1 + 2.4 * depth, anyLeaf(),
                   "opacity=\".85\"");
  }
  canvas.background(canvas.radialGradient({300, 220}, 190, {{0, "#fff8d8", 0.6}, {1, "#fff3c0", 0}}));
  return canvas.finish();
}

std::string blueHour() {
  SvgCanvas canvas("bh");
  Chance chance(41);
  canvas.background(canvas.verticalGradient({{0, "#0f1c46"},
                                             {0.3, "#2b4080"},
                                             {0.48, "#8b6a9a"},
                                             {0.6, "#f08f68"},
                                             {0.67, "#ffc98c"},
                                             {1, "#f2a679"}}));
  std::vector<Point> stars(34);
  for (Point& star : stars) star = {chance.between(0, 600), chance.between(0, 110)};
  canvas.dots(stars, 1.8, "#fff5e0", "opacity=\".75\"");
  canvas.rectangle(0, 268, 600, 132,
                   canvas.verticalGradient(
                       {{0, "#e0997f"}, {0.22, "#80628f"}, {0.5, "#3a3f78"}, {1, "#0d1738"}}, 268, 400));
  constexpr std::string_view kLayers[] = {"#7d6491", "#3a3c70", "#171d42"};
  constexpr std::string_view kLights[] = {"#ffd987", "#ffedbd", "#ffb765"};
  for (int layer = 0; layer < 3; ++layer) {
    std::vector<Point> windows[3];
    const double pitch = layer == 1 ? 8 : 10;
    if (layer == 1) {
      canvas.path("M392 268 L400 132 L404 62 L408 132 L416 268Z", "#3a3c70");
      canvas.ellipse({404, 138}, 12, 6, "#3a3c70");
      canvas.circle({404, 60}, 3, "#ff7a5a");
    }
    for (double x = -10; x < 610;) {
      const double width = chance.between(22, 46) + layer * 4;
      const double centre = (x - 330) / 330;
      const double tall = (layer == 0 ? 104 : layer == 1 ? 92 : 52) * (1.1 - 0.55 * centre * centre);
      const double height = tall * chance.between(0.4, 1.12);
      canvas.rectangle(x, 268 - height, width, height, kLayers[layer]);
      canvas.rectangle(x, 268, width, height * 0.7, kLayers[layer], "opacity=\".42\"");
      if (layer > 0) {
        const int floors = static_cast<int>(std::ceil((height - 17) / (pitch + 2)));
        const int columns = static_cast<int>(std::ceil((width - 11) / pitch));
        for (int floor = 0; floor < floors; ++floor) {
          for (int column = 0; column < columns; ++column) {
            if (chance.between(0, 1) > 0.45) continue;
            windows[static_cast<int>(chance.between(0, 2.99))].push_back(
                {x + 5 + column * pitch, 268 - height + 7 + floor * (pitch + 2)});
          }
        }
      }
      x += width + (layer == 2 ? chance.between(2, 26) : chance.between(0, 6));
    }
    for (int light = 0; light < 3 && layer > 0; ++light) {
      canvas.boxes(windows[light], pitch * 0.42, pitch * 0.52, kLights[light], "opacity=\".92\"");
    }
  }
  canvas.rectangle(0, 264, 600, 5, "#0b1030");
  std::vector<Point> lamps;
  for (int lamp = 0; lamp < 20; ++lamp) {
    const double x = 15 + lamp * 30 + chance.between(-6, 6);
    lamps.push_back({x, 262});
    canvas.ellipse({x, 300}, 4, 30, "#ffcf85", "opacity=\".2\"");
    for (int glint = 0; glint < 4; ++glint) {
      const double y = 275 + glint * 17 + chance.between(0, 9);
      canvas.ellipse({x + chance.between(-3, 3), y}, 4 + glint * 1.2, 1.2, "#ffdca0",
                     glint < 2 ? "opacity=\".8\"" : "opacity=\".45\"");
    }
  }
  canvas.dots(lamps, 13, "#ffd07a", "opacity=\".3\"");
  canvas.dots(lamps, 4.6, "#fff0c4");
  for (int wave = 0; wave < 36; ++wave) {
    canvas.ellipse({chance.between(0, 600), chance.between(276, 398)}, chance.between(16, 60), 0.9, "#c9c4ea",
                   "opacity=\".2\"");
  }
  return canvas.finish();
}

std::string northernNight() {
  SvgCanvas canvas("nn");
  Chance chance(19);
  canvas.background(
      canvas.verticalGradient({{0, "#050b22"}, {0.4, "#0c2440"}, {0.66, "#17505a"}, {1, "#0a1e30"}}));
  std::vector<Point> stars[3];
  for (int star = 0; star < 120; ++star) {
    stars[star % 3].push_back({chance.between(0, 600), chance.between(0, 240)});
  }
  canvas.dots(stars[0], 2.4, "#eaf6ff", "opacity=\".95\"");
  canvas.dots(stars[1], 1.6, "#eaf6ff", "opacity=\".7\"");
  canvas.dots(stars[2], 1.1, "#eaf6ff", "opacity=\".6\"");
  const std::string green = canvas.shapeGradient({{0, "#8f6bd8", 0},
                                                  {0.4, "#5f9fd0", 0.2},
                                                  {0.74, "#3fe3a4", 0.5},
                                                  {0.9, "#b4ffd6", 0.72},
                                                  {1, "#b4ffd6", 0}});
  const std::string violet = canvas.shapeGradient({{0, "#c06bd8", 0},
                                                   {0.45, "#a06be0", 0.36},
                                                   {0.8, "#4fd8b4", 0.42},
                                                   {0.93, "#9fffe0", 0.5},
                                                   {1, "#7fffd0", 0}});
  // Each curtain is a row of narrow rays, fading at both ends, that hang from a wavy line.
  for (int curtain = 0; curtain < 3; ++curtain) {
    const double phase = curtain * 1.7;
    for (int x = -12; x < 612; x += 9) {
      const double wave = 30 * std::sin(x / 96.0 + phase) + 12 * std::sin(x / 41.0 + 2.3 * phase);
      const double low = 128 + curtain * 44 + wave;
      const double tall = 104 + 24 * std::sin(x / 57.0 + phase) + chance.between(-14, 14);
      canvas.rectangle(x, low - tall, 9.3, tall, curtain == 1 ? violet : green,
                       chance.between(0, 1) > 0.5 ? "opacity=\".95\"" : "opacity=\".72\"");
    }
  }
  canvas.ridge(chance, 246, 24, 0.75, 272, "#0a2233");
  canvas.rectangle(0, 270, 600, 130,
                   canvas.verticalGradient({{0, "#2e8a86"}, {0.35, "#175463"}, {1, "#071528"}}, 270, 400));
  for (int glint = 0; glint < 60; ++glint) {
    const double depth = chance.between(0, 1);
    canvas.ellipse({chance.between(0, 600), 274 + 122 * depth}, 18 + 50 * depth, 0.8 + depth, "#8dffd2",
                   "opacity=\".17\"");
  }
  for (int tree = 0; tree < 24; ++tree) {
    const double x = tree * 26.5 + chance.between(-8, 8);
    canvas.fir(chance, {x, 274}, 20 + chance.between(0, 22), "#06141f");
  }
  canvas.path("M0 400 L0 352 C90 346 170 372 240 400Z", "#030a14");
  canvas.path("M600 400 L600 344 C540 346 470 370 420 400Z", "#030a14");
  for (int tree = 0; tree < 6; ++tree) {
    canvas.fir(chance, {-4 + tree * 25.0, 384 + tree * 5.0}, 190 - tree * 22.0 + chance.between(-20, 20),
               "#030a14");
    canvas.fir(chance, {606 - tree * 23.0, 380 + tree * 5.0}, 226 - tree * 31.0 + chance.between(-20, 20),
               "#030a14");
  }
  return canvas.finish();
}

std::string lavenderRows() {
  SvgCanvas canvas("lr");
  Chance chance(64);
  canvas.background(canvas.verticalGradient(
      {{0, "#5a7fb8"}, {0.22, "#c79cbf"}, {0.4, "#ffc9a0"}, {0.5, "#ffe7b8"}, {1, "#ffe7b8"}}));
  canvas.background(canvas.radialGradient({140, 184}, 220,
                                          {{0, "#fff7da", 0.95}, {0.3, "#ffe0a0", 0.5}, {1, "#ffc080", 0}}));
  canvas.circle({140, 178}, 24, "#fffbea");
  for (int cloud = 0; cloud < 6; ++cloud) {
    canvas.ellipse({chance.between(150, 600), 34 + cloud * 18.0}, chance.between(60, 130),
                   chance.between(3, 8), "#ffe3d6", "opacity=\".5\"");
  }
  canvas.ridge(chance, 190, 13, 0.35, 230, "#a98bb0");
  canvas.ridge(chance, 200, 9, 0.1, 230, "#8b7a9c");
  canvas.rectangle(0, 208, 600, 192, "#7d8a4e");
  // Rows run to one vanishing point; each is a wedge with a lit and a shaded side and blossoms upon it.
  constexpr Point kVanish = {330, 190};
  constexpr double kTop = 208;
  const std::string lit =
      canvas.verticalGradient({{0, "#b49ad0"}, {0.35, "#8f62bd"}, {1, "#5d3596"}}, 205, 400);
  const std::string shaded =
      canvas.verticalGradient({{0, "#8f7bb4"}, {0.35, "#62449a"}, {1, "#341d66"}}, 205, 400);
  std::vector<Point> blossoms[4][3];
  for (int row = -14; row <= 14; ++row) {
    const double foot = kVanish.x + row * 88;
    const auto along = [&](double x, double y) {
      return Point{kVanish.x + (x - kVanish.x) * (y - kVanish.y) / (400 - kVanish.y), y};
    };
    canvas.polygon({along(foot - 33, kTop), along(foot, kTop), {foot, 400}, {foot - 33, 400}}, lit);
    canvas.polygon({along(foot, kTop), along(foot + 33, kTop), {foot + 33, 400}, {foot, 400}}, shaded);
    for (int blossom = 0; blossom < 22; ++blossom) {
      const double depth = chance.between(0.02, 1);
      const Point spot = along(foot + chance.between(-35, 33), kTop + 192 * depth * depth);
      if (spot.x > -5 && spot.x < 605) blossoms[static_cast<int>(depth * 3.99)][blossom % 3].push_back(spot);
    }
  }
  constexpr std::string_view kBlossoms[] = {"#cfaaec", "#a678d6", "#7a4dbb"};
  for (int depth = 0; depth < 4; ++depth) {
    for (int colour = 0; colour < 3; ++colour) {
      canvas.dots(blossoms[depth][colour], 1.6 + 2.1 * depth, kBlossoms[colour], "opacity=\".85\"");
    }
  }
  canvas.path("M452 212 C456 190 455 176 452 160 L462 160 C460 178 462 194 467 212Z", "#4a3328");
  for (int leaf = 0; leaf < 46; ++leaf) {
    const double angle = chance.between(0, 6.28);
    const double reach = std::sqrt(chance.between(0, 1));
    const Point spot = {457 + 47 * reach * std::cos(angle), 132 + 37 * reach * std::sin(angle)};
    canvas.circle(spot, chance.between(7, 13), spot.x + spot.y < 585 ? "#7c9a4a" : "#47662f",
                  "opacity=\".85\"");
  }
  return canvas.finish();
}

}  // namespace juniva::artwork
