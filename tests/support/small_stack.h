#pragma once

#include <functional>

/// Runs `action` on a thread of its own with a stack of 512 KiB, and waits for it.
void onSmallStack(const std::function<void()>& action);
