// journal/recovery.h: what a process that ended in the middle of a step left of the journals.
#pragma once

namespace lumo {

// Finishes an interrupted replay's commit and an interrupted trim, in silence unless a step fails. Afterwards
// no leftover keeps a trim or a commit from working. No record that stands in one of the files is lost.
void RecoverJournals();

}  // namespace lumo
