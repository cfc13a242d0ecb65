#pragma once

class QLineEdit;

namespace zarek {

// After a message about what a box holds: once the event loop is back (the message closed, the
// focus change that was under way done), the cursor returns to the box with its text selected,
// ready to be typed over.
void returnToBox(QLineEdit *box);

}
