#include <algorithm>
#include <cmath>

#include "platform/linux/linux_view.h"

// The drawn part of animations follows the frame clock; their ends follow the dispatch timers, so that a
// completion comes at its time also for a view that is not on screen.

namespace platform {

struct LinuxView::Motion {
  gint64 start = 0;
  gint64 duration = 0;
  // How far from the frame, which has its new value already, the view is drawn at first.
  Point from;
  double fromOpacity = 0;
  double toOpacity = 0;

  double progress(gint64 now) const {
    return duration <= 0
               ? 1
               : std::clamp(static_cast<double>(now - start) / static_cast<double>(duration), 0.0, 1.0);
  }
};

struct LinuxView::Turn {
  gint64 start = 0;
  RotationAnimation animation;
  std::function<void(bool)> stopped;

  double angle(gint64 now) const {
    const auto length = static_cast<double>(animation.duration.count()) * 1000;
    double part = length <= 0 ? 1 : static_cast<double>(now - start) / length;
    part = animation.forever ? part - std::floor(part) : std::min(part, 1.0);
    return animation.from + (animation.to - animation.from) * part;
  }
};

namespace {

// Eases in and out, as desktop animations do; begins and ends at rest.
double eased(double part) {
  return part * part * (3 - 2 * part);
}

double between(double from, double to, double part) {
  return from + (to - from) * part;
}

}  // namespace

void LinuxView::startTicking() {
  if (tickId_ != 0) {
    return;
  }
  tickId_ = gtk_widget_add_tick_callback(
      widget_,
      [](GtkWidget*, GdkFrameClock* clock, gpointer self) -> gboolean {
        return static_cast<LinuxView*>(self)->tick(gdk_frame_clock_get_frame_time(clock)) ? G_SOURCE_CONTINUE
                                                                                          : G_SOURCE_REMOVE;
      },
      this, nullptr);
}

bool LinuxView::tick(gint64 frameTime) {
  if (frameMotion_) {
    const Motion& motion = *frameMotion_;
    const double part = motion.progress(frameTime);
    const double shown = eased(part);
    LayerState state = layer();
    state.motion = {between(motion.from.x, 0, shown), between(motion.from.y, 0, shown)};
    setLayer(state);
    if (part >= 1) {
      frameMotion_.reset();
    }
  }
  if (opacityMotion_) {
    const Motion& motion = *opacityMotion_;
    const double part = motion.progress(frameTime);
    gtk_widget_set_opacity(widget_, between(motion.fromOpacity, motion.toOpacity, eased(part)));
    if (part >= 1) {
      opacityMotion_.reset();
    }
  }
  showRotation();
  if (frameMotion_ || opacityMotion_ || !turns_.empty()) {
    return true;
  }
  tickId_ = 0;
  return false;
}

void LinuxView::showRotation() {
  double angle = rotation_;
  const gint64 now = g_get_monotonic_time();
  for (const auto& [key, turn] : turns_) {
    angle = turn->angle(now);
  }
  LayerState state = layer();
  if (state.rotation != angle) {
    state.rotation = angle;
    setLayer(state);
  }
}

void LinuxView::animateFrame(const Rect& frame, Millis duration, Block completion) {
  // From where it is drawn now, in the middle of another motion too.
  const Rect before = this->frame();
  const Point drawn = layer().motion;
  setFrame(frame);
  if (duration.count() > 0) {
    LayerState state = layer();
    state.motion = {before.x + drawn.x - frame.x, before.y + drawn.y - frame.y};
    frameMotion_ = std::make_shared<Motion>();
    frameMotion_->start = g_get_monotonic_time();
    frameMotion_->duration = duration.count() * 1000;
    frameMotion_->from = state.motion;
    setLayer(state);
    startTicking();
  }
  dispatch_.main().after(duration, [alive = lifetime(), completion = std::move(completion)] {
    if (!alive.expired() && completion) {
      completion();
    }
  });
}

void LinuxView::animateOpacity(double opacity, Millis duration, Block completion) {
  auto motion = std::make_shared<Motion>();
  motion->start = g_get_monotonic_time();
  motion->duration = duration.count() * 1000;
  motion->fromOpacity = gtk_widget_get_opacity(widget_);
  motion->toOpacity = std::clamp(opacity, 0.0, 1.0);
  opacity_ = motion->toOpacity;
  opacityMotion_ = std::move(motion);
  startTicking();
  dispatch_.main().after(duration, [alive = lifetime(), this, completion = std::move(completion)] {
    if (alive.expired()) {
      return;
    }
    if (!gtk_widget_get_mapped(widget_)) {
      gtk_widget_set_opacity(widget_, opacity_);
    }
    if (completion) {
      completion();
    }
  });
}

void LinuxView::addAnimation(const RotationAnimation& animation, const std::string& key,
                             std::function<void(bool)> stopped) {
  removeAnimation(key);
  auto turn = std::make_shared<Turn>(Turn{g_get_monotonic_time(), animation, std::move(stopped)});
  turns_.emplace_back(key, turn);
  startTicking();
  if (animation.forever) {
    return;
  }
  dispatch_.main().after(animation.duration, [alive = lifetime(), this, turn] {
    if (alive.expired()) {
      return;
    }
    const auto place =
        std::find_if(turns_.begin(), turns_.end(), [&](const auto& entry) { return entry.second == turn; });
    if (place == turns_.end()) {
      return;
    }
    turns_.erase(place);
    showRotation();
    if (turn->stopped) {
      turn->stopped(true);
    }
  });
}

void LinuxView::removeAnimation(const std::string& key) {
  const auto place =
      std::find_if(turns_.begin(), turns_.end(), [&](const auto& entry) { return entry.first == key; });
  if (place == turns_.end()) {
    return;
  }
  const std::shared_ptr<Turn> turn = place->second;
  turns_.erase(place);
  showRotation();
  if (turn->stopped) {
    dispatch_.main().async([turn] { turn->stopped(false); });
  }
}

std::vector<std::string> LinuxView::animationKeys() const {
  std::vector<std::string> keys;
  for (const auto& [key, turn] : turns_) {
    keys.push_back(key);
  }
  return keys;
}

}  // namespace platform
