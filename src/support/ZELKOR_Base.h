#pragma once

namespace lumo {

// The root of the support library's classes.
class ZELKOR_Base {};

}  // namespace lumo
