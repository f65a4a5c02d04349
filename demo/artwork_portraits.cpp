#include "artwork.h"
#include "svg_canvas.h"

namespace juniva::artwork {
namespace {

// Out-of-focus lights behind a person.
void paintLights(SvgCanvas& canvas, Chance& chance, int count, std::string_view colour) {
  for (int light = 0; light < count; ++light) {
    canvas.circle({chance.between(-10, 610), chance.between(-10, 300)}, chance.between(14, 52), colour,
                  light % 2 == 0 ? "opacity=\".16\"" : "opacity=\".26\"");
  }
}

}  // namespace

std::string clara() {
  SvgCanvas canvas("cl");
  Chance chance(8);
  canvas.background(
      canvas.radialGradient({250, 150}, 470, {{0, "#f8dcb2"}, {0.45, "#e0a673"}, {1, "#8a4a32"}}));
  paintLights(canvas, chance, 22, "#fff0c8");
  const std::string hair =
      canvas.horizontalGradient({{0, "#8a4527"}, {0.5, "#5c2a1b"}, {1, "#37170f"}}, 190, 410);
  // Hair behind, shoulders, neck.
  canvas.path(
      "M300 52 C214 50 184 116 186 186 C187 240 176 280 196 306 C226 330 376 330 404 306 C424 280 413 240 "
      "414 186 C416 116 386 50 300 52Z",
      hair);
  canvas.path("M118 400 C124 336 186 312 252 300 C280 314 320 314 348 300 C414 312 476 336 482 400Z",
              canvas.horizontalGradient({{0, "#f0b93c"}, {0.55, "#d99a24"}, {1, "#a3681a"}}, 118, 482));
  canvas.path("M264 240 L336 240 L340 306 C318 322 282 322 260 306Z",
              canvas.horizontalGradient({{0, "#eeb48c"}, {1, "#b9714e"}}, 260, 340));
  canvas.path("M262 262 C284 288 320 286 338 258 L338 276 C320 298 282 298 262 280Z", "#9a5638",
              "opacity=\".4\"");
  canvas.path("M248 296 C276 318 324 318 352 296 L358 326 C324 348 276 348 242 326Z",
              canvas.horizontalGradient({{0, "#f6c75a"}, {1, "#bd7f1e"}}, 242, 358));
  for (int rib = 0; rib < 9; ++rib) {
    const double x = 256 + rib * 11;
    canvas.line("M" + svgNumber(x) + " " + svgNumber(311 + (rib < 5 ? rib : 8 - rib) * 1.8) + "l0 18",
                "#a8701c", 1.6, "opacity=\".55\"");
  }
  // Face.
  const std::string_view face =
      "M228 154 C226 96 262 80 300 80 C338 80 374 96 372 154 C371 214 344 264 300 266 C256 264 229 214 228 "
      "154Z";
  canvas.path(face,
              canvas.radialGradient({274, 150}, 130, {{0, "#ffd9b8"}, {0.6, "#f5bf95"}, {1, "#d98f66"}}));
  canvas.path(face, canvas.horizontalGradient({{0, "#fff0d8", 0.22}, {0.5, "#fff", 0}, {1, "#8a3f28", 0.34}},
                                              228, 372));
  canvas.ellipse({257, 202}, 20, 12, "#ee8468", "opacity=\".4\"");
  canvas.ellipse({343, 202}, 20, 12, "#e0755c", "opacity=\".38\"");
  // Smiling eyes, brows, nose, mouth.
  canvas.line("M249 172 C256 162 272 162 280 172", "#3c1d14", 5);
  canvas.line("M320 172 C328 162 344 162 351 172", "#3c1d14", 5);
  canvas.line("M247 171 l-6 -5 M353 171 l6 -5", "#3c1d14", 3);
  canvas.line("M246 148 C256 139 272 139 282 145", "#5c2a1b", 5, "opacity=\".85\"");
  canvas.line("M318 145 C328 139 344 139 354 148", "#5c2a1b", 5, "opacity=\".85\"");
  canvas.line("M302 176 C306 190 310 198 303 203 C300 205 296 204 294 202", "#c27a55", 3);
  canvas.path("M272 222 C286 228 314 228 328 222 C322 243 278 243 272 222Z", "#a63f38");
  canvas.path("M277 224.5 C290 229 310 229 323 224.5 C319 232 281 232 277 224.5Z", "#fffaf2");
  // Parting and strands in front, with light on them.
  canvas.path(
      "M318 70 C266 66 220 104 226 176 C228 206 222 250 214 276 C190 240 186 160 208 108 C226 66 282 48 318 "
      "70Z",
      hair);
  canvas.path(
      "M318 70 C352 74 382 106 375 172 C374 206 380 250 388 276 C412 238 414 156 394 108 C376 68 342 54 318 "
      "70Z",
      hair);
  canvas.line("M300 70 C252 78 216 122 212 196", "#d08a55", 4, "opacity=\".5\"");
  canvas.line("M288 64 C242 76 206 118 202 188", "#d08a55", 3, "opacity=\".4\"");
  canvas.line("M340 74 C372 92 392 130 394 190", "#7a4128", 3, "opacity=\".7\"");
  canvas.circle({222, 236}, 6, "#ffe7a0");
  canvas.circle({378, 236}, 6, "#e6b85c");
  canvas.background(canvas.radialGradient({300, 190}, 400, {{0.55, "#2a0f06", 0}, {1, "#2a0f06", 0.45}}));
  return canvas.finish();
}

std::string grandpaEmil() {
  SvgCanvas canvas("ge");
  Chance chance(31);
  canvas.background(
      canvas.radialGradient({350, 150}, 460, {{0, "#a8c4b8"}, {0.45, "#5f8a86"}, {1, "#1f3d44"}}));
  paintLights(canvas, chance, 18, "#e9f2d0");
  // Jacket, jumper, collar.
  canvas.path("M92 400 C100 330 170 300 244 290 L356 290 C430 300 500 330 508 400Z",
              canvas.horizontalGradient({{0, "#4d5b78"}, {0.5, "#33415e"}, {1, "#1c263d"}}, 92, 508));
  canvas.path("M248 288 L300 372 L352 288 L344 400 L256 400Z", "#8a3b2c");
  canvas.path("M252 284 L300 356 L236 336 C238 314 242 296 252 284Z", "#f4ead8");
  canvas.path("M348 284 L300 356 L364 336 C362 314 358 296 348 284Z", "#d9ccb6");
  canvas.path("M262 236 L338 236 L344 294 L300 346 L256 294Z",
              canvas.horizontalGradient({{0, "#d69a78"}, {1, "#9a6048"}}, 256, 344));
  // Head and ears.
  canvas.ellipse({222, 178}, 14, 24, "#d49474");
  canvas.ellipse({378, 178}, 14, 24, "#b3755a");
  const std::string_view face =
      "M226 150 C224 98 262 84 300 84 C338 84 376 98 374 150 C374 220 348 272 300 274 C252 272 226 220 226 "
      "150Z";
  canvas.path(face,
              canvas.radialGradient({280, 160}, 130, {{0, "#f4c8a6"}, {0.6, "#e2a884"}, {1, "#bd7c5c"}}));
  canvas.path(face, canvas.horizontalGradient({{0, "#fff0d8", 0.2}, {0.5, "#fff", 0}, {1, "#5a2f28", 0.36}},
                                              226, 374));
  canvas.ellipse({258, 204}, 18, 11, "#d8755c", "opacity=\".42\"");
  canvas.ellipse({342, 204}, 18, 11, "#c86a54", "opacity=\".4\"");
  // Beard, moustache, mouth.
  canvas.path(
      "M224 172 C222 250 250 318 300 320 C350 318 378 250 376 172 C372 196 366 214 350 220 C332 208 316 210 "
      "300 212 C284 210 268 208 250 220 C234 214 228 196 224 172Z",
      canvas.horizontalGradient({{0, "#fbf7ee"}, {0.55, "#e6e0d4"}, {1, "#a9a49a"}}, 222, 378));
  canvas.path("M274 238 C288 246 312 246 326 238 C320 254 280 254 274 238Z", "#9a4a3c");
  canvas.path(
      "M300 214 C282 204 258 214 246 236 C264 242 286 240 300 230 C314 240 336 242 354 236 C342 214 318 204 "
      "300 214Z",
      "#fffdf6");
  for (int hair = 0; hair < 11; ++hair) {
    const double x = 246 + hair * 10.8;
    canvas.line("M" + svgNumber(x) + " " + svgNumber(262 + chance.between(-8, 8)) + "q" +
                    svgNumber((300 - x) * 0.08) + " 14 " + svgNumber((300 - x) * 0.22) + " 28",
                "#bdb6a8", 2, "opacity=\".6\"");
  }
  // Eyes with laughter lines, brows, nose, glasses.
  canvas.line("M250 172 C257 164 270 164 277 172", "#33211a", 4.5);
  canvas.line("M323 172 C330 164 343 164 350 172", "#33211a", 4.5);
  canvas.line("M234 164 l-7 -5 M233 172 l-8 0 M366 164 l7 -5 M367 172 l8 0", "#a3674c", 2.2);
  canvas.path("M244 142 C254 132 272 133 284 141 C272 141 256 142 244 149Z", "#f2eee4");
  canvas.path("M356 142 C346 132 328 133 316 141 C328 141 344 142 356 149Z", "#dcd6ca");
  canvas.path("M292 168 C288 186 280 198 286 205 C294 211 308 211 315 205 C321 198 311 186 308 168Z",
              "#cf8f70", "opacity=\".75\"");
  canvas.circle({263, 172}, 27, "#eaf6ff", "fill-opacity=\".14\" stroke=\"#3a2a1e\" stroke-width=\"4\"");
  canvas.circle({337, 172}, 27, "#eaf6ff", "fill-opacity=\".14\" stroke=\"#3a2a1e\" stroke-width=\"4\"");
  canvas.line("M290 168 C296 162 304 162 310 168 M236 170 L222 166 M364 170 L378 166", "#3a2a1e", 4);
  canvas.line("M250 158 l10 -7 M324 158 l10 -7", "#ffffff", 3, "opacity=\".7\"");
  // Flat cap with a herringbone of faint strokes.
  canvas.path(
      "M206 124 C204 62 250 40 304 40 C362 40 396 66 396 118 C398 126 392 132 380 128 C330 110 262 112 222 "
      "134 C212 138 206 134 206 124Z",
      canvas.horizontalGradient({{0, "#a08055"}, {0.5, "#7d5f3c"}, {1, "#463320"}}, 204, 398));
  for (int stroke = 0; stroke < 15; ++stroke) {
    const double x = 222 + stroke * 11;
    canvas.line("M" + svgNumber(x) + " " + svgNumber(110 - (stroke % 2) * 6) + "l9 -20 l7 -18", "#d9bd8a",
                1.6, "opacity=\".35\"");
  }
  canvas.path(
      "M212 130 C250 104 342 102 392 126 C386 140 372 144 352 138 C316 126 270 128 236 146 C216 152 204 142 "
      "212 "
      "130Z",
      canvas.horizontalGradient({{0, "#8a6a42"}, {1, "#38281a"}}, 206, 394));
  canvas.background(canvas.radialGradient({300, 190}, 400, {{0.55, "#06151a", 0}, {1, "#06151a", 0.5}}));
  return canvas.finish();
}

}  // namespace juniva::artwork
