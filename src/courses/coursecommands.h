#pragma once

namespace zarek {
class CommandRegistry;
// New course, course and kilometre correction, and the course reports by truck, period and client.
void registerCourseCommands(CommandRegistry &commands);
}
