// engine/offline_replay.h: sends what was completed without the server.
#pragma once

namespace lumo {

int OfflinePaymentsProcess();  // the number of records the server took

}  // namespace lumo
