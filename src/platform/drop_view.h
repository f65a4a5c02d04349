#pragma once

#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/pasteboard.h"
#include "platform/view.h"

namespace platform {

// The operations that a drag may end with, as bits.
inline constexpr unsigned kDragOperationNone = 0;
inline constexpr unsigned kDragOperationEvery = ~0U;

// A drag as a destination sees it: everything that it carries of the registered types.
struct DraggingInfo {
  Pasteboard draggingPasteboard;
};

// Draws into a view, during the call that it is given to.
class Canvas {
 public:
  virtual ~Canvas() = default;
  // In logical pixels; 1.0 at first.
  virtual void setDefaultLineWidth(double width) = 0;
  // Of what is drawn from now on; black at first.
  virtual void setColor(const Color& color) = 0;
  // A line of the default width along the rectangle's edges, in the view's coordinates, as far as the view
  // goes. Where half of it would lie outside of the view, it is moved inside.
  virtual void strokeRect(const Rect& rect) = 0;
};

// What a view does with drags, and how it looks. Main queue.
class DropDestination {
 public:
  virtual ~DropDestination() = default;
  // A drag has come over the view and its content is known. Answers the operations that it may end with.
  virtual unsigned draggingEntered(const DraggingInfo& sender) = 0;
  // It has left again, or was called off.
  virtual void draggingExited(const DraggingInfo& sender) = 0;
  // It was let go over the view: these three, in this order. The second and the third only after a yes of the
  // first, and of the first two. Other than by a drop a drag never gets here.
  virtual bool prepareForDragOperation(const DraggingInfo& sender) = 0;
  virtual bool performDragOperation(const DraggingInfo& sender) = 0;
  virtual void draggingEnded(const DraggingInfo& sender) = 0;
  // Draws the view; `area` is what has to be drawn anew.
  virtual void drawRect(const Rect& area, Canvas& canvas) = 0;
};

// A view that lies above others, lets clicks and keys through and takes what other programs drag onto it.
// What is dragged from one of the application's own views is left to the view below. What a source lets go
// only to lose it (a drag to be moved and not copied) is refused. Main queue.
class DropView : public virtual View {
 public:
  // Hears of drags and draws until another (or null) is set. Not owned.
  virtual void setDestination(DropDestination* destination) = 0;
  // The pasteboard types (kFilenamesPboardType, kStringPboardType) that are taken; a drag that carries none
  // of them is not heard of, and nobody else gets it. At first there is none.
  virtual void registerForDraggedTypes(const std::vector<std::string>& types) = 0;
  // Has the view drawn anew a little later.
  virtual void setNeedsDisplay() = 0;
};

}  // namespace platform
