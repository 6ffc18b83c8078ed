#include "Interrupt.h"

#include "CommandError.h"
#include "Platform.h"

void stopIfInterrupted() {
  if (platform::InterruptCatcher::interrupted()) throw CommandError("interrupted", exitInterrupted);
}
