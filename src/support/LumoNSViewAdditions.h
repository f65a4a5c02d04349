#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/queue.h"
#include "platform/view.h"

// Attention animations for any view, and a search among subviews.
//
// The animations may be called from any thread while the view lives: each posts its work to the main queue of
// `dispatch` and returns at once. None keeps its view alive, and one whose view goes ends there without
// calling its block. `dispatch` must outlive the animation. An empty block is allowed. Completion blocks run
// on the main queue.
//
// The counted operations run one pass after another, 3 for a count of 0. Each looks for the end of its pass
// at fixed intervals from the pass's begin (1 ms for the shake, 100 ms for the others), so the next pass
// starts at the first interval after it. Their work between passes is on the global background queue.
namespace lumo::LumoNSViewAdditions {

// One shake: 10 to the right, back, 10 to the left, back, 50 ms each; then the block.
void nodLeftRightWithCompletionHandler(platform::Dispatch& dispatch, platform::View& view,
                                       const platform::Block& block);
void nodLeftRight(platform::Dispatch& dispatch, platform::View& view, std::uint32_t count);

// Fades "Recording_text.png" and "Complete_text.png" out and in, five steps of 1 s; then the block. A view
// that is no image view stays as it is, and the block is never called.
void fadeImageWithCompletionHandler(platform::Dispatch& dispatch, platform::View& view,
                                    const platform::Block& block);
// On a view that is no image view the first pass never ends; that costs nothing.
void fadeInOut(platform::Dispatch& dispatch, platform::View& view, std::uint32_t count);

// Spins the view about its centre without end, clockwise, one turn a second, under the key "rotation"; then
// the block. A view that has any animation is left alone: the first variant then calls nothing, the second
// its block with false (true when it has started a spin).
void rotateViewWithCompletionBlock(platform::Dispatch& dispatch, platform::View& view, platform::Block block);
void rotateViewWithCompletionBlock2(platform::Dispatch& dispatch, platform::View& view,
                                    std::function<void(bool started)> block);

// One even turn counter-clockwise about the centre within 1 s, under the key "transform"; its end is logged.
// The block is never called.
void rotateNSViewWithCompletionHandler(platform::Dispatch& dispatch, platform::View& view,
                                       const platform::Block& block);
// Since a single turn never tells its end, this is one turn whatever the count.
void rotateImage(platform::Dispatch& dispatch, platform::View& view, std::uint32_t count);

// Fades out in 200 ms and in again in 150 ms; then the block.
void flashOnOffWithCompletionHandler(platform::Dispatch& dispatch, platform::View& view,
                                     const platform::Block& block);
void flashOnOff(platform::Dispatch& dispatch, platform::View& view, std::uint32_t count);
// Five flashes.
void flashOnOff(platform::Dispatch& dispatch, platform::View& view);

// Makes `point` (a fraction of the view's size, (0, 0) top left) the point about which the view turns, and
// lets the view stay where it is on the screen, also when it is turned. At once; main queue only.
void setAnchorPoint(platform::View& view, platform::Point point);

// Hears of the end of a single turn: logs it. `finished` is false when the turn was removed before.
void animationDidStop_finished(platform::View& view, const platform::RotationAnimation& animation,
                               bool finished);

// The first subview, depth first, that is of `viewType` and has this identifier (ignoring case); null when
// there is none. A view of the type with another identifier is not searched further, so with ViewKind::View,
// which every view is, only the direct subviews count. Main queue only.
platform::View* findViewWithIdentifier_viewType(platform::View& view, const std::string& identifier,
                                                platform::ViewKind viewType);

}  // namespace lumo::LumoNSViewAdditions
