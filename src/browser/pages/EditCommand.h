#pragma once

namespace morvane {

/// What can be done with the text that has the keyboard in a page.
enum class EditCommand { undo, redo, cut, copy, paste, selectAll };

} // namespace morvane
