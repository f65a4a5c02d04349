#include "support/LumoNSViewAdditions.h"

#include <cmath>
#include <memory>
#include <numbers>
#include <utility>
#include <vector>

#include "platform/log.h"
#include "platform/strings.h"

namespace lumo::LumoNSViewAdditions {

using platform::Block;
using platform::Dispatch;
using platform::ImageView;
using platform::Millis;
using platform::NSLog;
using platform::Point;
using platform::Rect;
using platform::RotationAnimation;
using platform::View;
using platform::ViewKind;

namespace {

constexpr const char* kRecordingImage = "Recording_text.png";
constexpr const char* kCompleteImage = "Complete_text.png";
constexpr double kShakeDistance = 10;
constexpr Millis kShakeStep{50};
constexpr Millis kFadeStep{1000};
constexpr Millis kFlashOut{200};
constexpr Millis kFlashIn{150};
constexpr Millis kTurn{1000};
constexpr float kFullTurn = 6.2831855F;
constexpr std::uint32_t kUsualCount = 3;
constexpr std::uint32_t kFlashCount = 5;
constexpr Millis kShakeCheck{1};
constexpr Millis kCheck{100};

// A view that may be gone when its turn comes. The view is touched on the main queue only, where views end,
// so that it cannot go between the question and the use.
class Target {
 public:
  explicit Target(View& view) : view_(&view), alive_(view.lifetime()) {}
  View* get() const { return alive_.expired() ? nullptr : view_; }

 private:
  View* view_;
  std::weak_ptr<void> alive_;
};

void call(const Block& block) {
  if (block) {
    block();
  }
}

// One part of an animation: starts it and has `next` called at its end.
using Step = std::function<void(View& view, Block next)>;

void runSteps(const Target& target, const std::shared_ptr<const std::vector<Step>>& steps, std::size_t index,
              const Block& done) {
  View* view = target.get();
  if (view == nullptr) {
    return;
  }
  if (index == steps->size()) {
    call(done);
    return;
  }
  (*steps)[index](*view, [=] { runSteps(target, steps, index + 1, done); });
}

void runSteps(const Target& target, std::vector<Step> steps, const Block& done) {
  runSteps(target, std::make_shared<const std::vector<Step>>(std::move(steps)), 0, done);
}

// The single operations: all are given what is to be called at the end.
using Single = void (*)(Dispatch& dispatch, const Target& target, const Block& done);

void shakeOnMain(const Target& target, View& view, const Block& done) {
  const Rect frame = view.frame();
  NSLog(" self.animator.frame = %@", frame);
  NSLog("          self.frame = %@", frame);
  Rect right = frame;
  right.x += kShakeDistance;
  Rect left = frame;
  left.x -= kShakeDistance;

  const auto move = [](const char* text, const Rect& to) -> Step {
    return [text, to](View& shaken, Block next) {
      NSLog(text);
      shaken.animateFrame(to, kShakeStep, std::move(next));
    };
  };
  // The way back starts from the frame itself, so the last step ends where it starts.
  const auto moveFromFrame = [move, frame](const char* text, const Rect& to) -> Step {
    return [step = move(text, to), frame](View& shaken, Block next) {
      shaken.animateFrame(frame, Millis::zero(), {});
      step(shaken, std::move(next));
    };
  };
  runSteps(target,
           {move("111111...", right), move("2222222...", frame), moveFromFrame("3333...", left),
            moveFromFrame("4444...", frame)},
           [done] {
             NSLog("DONE...");
             call(done);
           });
}

void shake(Dispatch& dispatch, const Target& target, const Block& done) {
  dispatch.main().async([target, done] {
    if (View* view = target.get()) {
      shakeOnMain(target, *view, done);
    }
  });
}

void fadeOnMain(const Target& target, const Block& done) {
  const Step showRecording = [](View& view, Block next) {
    view.animateOpacity(1.0, kFadeStep, std::move(next));
    dynamic_cast<ImageView&>(view).setImageNamed(kRecordingImage);
  };
  const auto fadeOut = [](const char* nextImage) -> Step {
    return [nextImage](View& view, const Block& next) {
      view.animateOpacity(0.0, kFadeStep, [target = Target(view), nextImage, next] {
        if (View* faded = target.get()) {
          faded->setHidden(true);
          dynamic_cast<ImageView&>(*faded).setImageNamed(nextImage);
          next();
        }
      });
    };
  };
  const Step fadeIn = [](View& view, Block next) {
    view.setHidden(false);
    view.animateOpacity(1.0, kFadeStep, std::move(next));
  };
  runSteps(target, {showRecording, fadeOut(kCompleteImage), fadeIn, fadeOut(kRecordingImage), fadeIn}, done);
}

void fade(Dispatch& dispatch, const Target& target, const Block& done) {
  dispatch.main().async([target, done] {
    if (dynamic_cast<ImageView*>(target.get()) != nullptr) {
      fadeOnMain(target, done);
    }
  });
}

// The block goes unused: a single turn never tells its end.
void turn(Dispatch& dispatch, const Target& target, const Block& /*done*/) {
  dispatch.main().async([target] {
    View* view = target.get();
    if (view == nullptr) {
      return;
    }
    const RotationAnimation animation{0.0, kFullTurn, kTurn, false};
    view->setLayerAnchorPoint({0.5, 1.0});
    view->setLayerAnchorPoint({0.5, 0.5});
    view->addAnimation(animation, "transform", [target, animation](bool finished) {
      if (View* turned = target.get()) {
        animationDidStop_finished(*turned, animation, finished);
      }
    });
  });
}

void flash(Dispatch& dispatch, const Target& target, const Block& done) {
  const auto fadeTo = [](double opacity, Millis duration) -> Step {
    return [opacity, duration](View& view, Block next) {
      view.animateOpacity(opacity, duration, std::move(next));
    };
  };
  dispatch.main().async([target, done, fadeTo] {
    runSteps(target, {fadeTo(0.0, kFlashOut), fadeTo(1.0, kFlashIn)}, done);
  });
}

// Repeats a single operation. The flag that a pass has ended can change only in the completion of its
// operation, so the time of the check that will see it is reckoned there instead of waking for every check.
// The loop lives in that completion: where the operation drops it (no image view, a single turn, a view that
// is gone) the wait without end holds nothing.
struct Loop {
  Dispatch& dispatch;
  Target target;
  Single single;
  Millis check;
  // The operation's name in the log lines around each pass; null for none.
  const char* name;
  std::uint32_t counter;

  void log(const char* format) const {
    if (name != nullptr) {
      NSLog(format, name, static_cast<std::int32_t>(counter));
    }
  }
};

void runPass(const std::shared_ptr<Loop>& loop);

void passHasEnded(const std::shared_ptr<Loop>& loop, Millis started) {
  const Millis elapsed = loop->dispatch.now() - started;
  const Millis untilCheck = loop->check - elapsed % loop->check;
  loop->dispatch.global(platform::QualityOfService::Background).after(untilCheck, [loop] {
    loop->log("%@-> myloopcount[%i] ended...");
    runPass(loop);
  });
}

void runPass(const std::shared_ptr<Loop>& loop) {
  if (loop->counter-- == 0) {
    return;
  }
  loop->log("%@-> myloopcount[%i] start...");
  const Millis started = loop->dispatch.now();
  loop->single(loop->dispatch, loop->target, [loop, started] {
    loop->dispatch.global(platform::QualityOfService::Background).async([loop, started] {
      passHasEnded(loop, started);
    });
  });
}

void repeat(Dispatch& dispatch, View& view, Single single, Millis check, std::uint32_t count,
            const char* name = nullptr) {
  const auto loop = std::make_shared<Loop>(
      Loop{dispatch, Target(view), single, check, name, count == 0 ? kUsualCount : count});
  dispatch.global(platform::QualityOfService::Background).async([loop] { runPass(loop); });
}

// A vector in the view's own coordinates as it lies on the screen. y grows downwards, so a turn
// counter-clockwise on screen has the signs of its sines changed.
Point turned(Point point, double radians) {
  const double cosine = std::cos(radians);
  const double sine = std::sin(radians);
  return {point.x * cosine + point.y * sine, point.y * cosine - point.x * sine};
}

}  // namespace

void nodLeftRightWithCompletionHandler(Dispatch& dispatch, View& view, const Block& block) {
  shake(dispatch, Target(view), block);
}

void nodLeftRight(Dispatch& dispatch, View& view, std::uint32_t count) {
  repeat(dispatch, view, shake, kShakeCheck, count, "nodLeftRight:");
}

void fadeImageWithCompletionHandler(Dispatch& dispatch, View& view, const Block& block) {
  fade(dispatch, Target(view), block);
}

void fadeInOut(Dispatch& dispatch, View& view, std::uint32_t count) {
  repeat(dispatch, view, fade, kCheck, count);
}

void rotateViewWithCompletionBlock(Dispatch& dispatch, View& view, Block block) {
  rotateViewWithCompletionBlock2(dispatch, view, [block = std::move(block)](bool started) {
    if (started) {
      call(block);
    }
  });
}

void rotateViewWithCompletionBlock2(Dispatch& dispatch, View& view, std::function<void(bool)> block) {
  dispatch.main().async([target = Target(view), block = std::move(block)] {
    View* spun = target.get();
    if (spun == nullptr) {
      return;
    }
    setAnchorPoint(*spun, {0.5, 0.5});
    const bool starts = spun->animationKeys().empty();
    if (starts) {
      spun->addAnimation({0.0, -2 * std::numbers::pi, kTurn, true}, "rotation", {});
    }
    if (block) {
      block(starts);
    }
  });
}

void rotateNSViewWithCompletionHandler(Dispatch& dispatch, View& view, const Block& block) {
  turn(dispatch, Target(view), block);
}

void rotateImage(Dispatch& dispatch, View& view, std::uint32_t count) {
  repeat(dispatch, view, turn, kCheck, count);
}

void flashOnOffWithCompletionHandler(Dispatch& dispatch, View& view, const Block& block) {
  flash(dispatch, Target(view), block);
}

void flashOnOff(Dispatch& dispatch, View& view, std::uint32_t count) {
  repeat(dispatch, view, flash, kCheck, count);
}

void flashOnOff(Dispatch& dispatch, View& view) {
  flashOnOff(dispatch, view, kFlashCount);
}

void setAnchorPoint(View& view, Point point) {
  const Rect frame = view.frame();
  const Point before = view.anchorPoint();
  const double radians = view.rotation();
  const Point newPoint = turned({frame.width * point.x, frame.height * point.y}, radians);
  const Point oldPoint = turned({frame.width * before.x, frame.height * before.y}, radians);
  const Point position = view.layerPosition();
  view.setLayerPosition({position.x - oldPoint.x + newPoint.x, position.y - oldPoint.y + newPoint.y});
  view.setLayerAnchorPoint(point);
}

void animationDidStop_finished(View& view, const RotationAnimation& /*animation*/, bool /*finished*/) {
  NSLog("%@-%@-> ...", view, "animationDidStop:finished:");
}

View* findViewWithIdentifier_viewType(View& view, const std::string& identifier, ViewKind viewType) {
  NSLog("%@-%@-> identifier[%@] classname[%@]", view, "findViewWithIdentifier:viewType:", identifier,
        viewType);
  const std::vector<View*> subviews = view.subviews();
  NSLog("self.subviews = %@", subviews);
  for (View* aview : subviews) {
    const std::optional<std::string> name = aview->identifier();
    NSLog("checking => aview[%@] = %@ (%@)", name, *aview, aview->kind());
    if (aview->isKindOf(viewType)) {
      if (name && platform::equalIgnoringCase(*name, identifier)) {
        return aview;
      }
    } else if (View* found = findViewWithIdentifier_viewType(*aview, identifier, viewType)) {
      return found;
    }
  }
  return nullptr;
}

}  // namespace lumo::LumoNSViewAdditions
