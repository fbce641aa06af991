#pragma once

namespace Linux::ServiceManager {

/// Tell the service manager where the process stands, as sd_notify(3) has it. Nothing happens where
/// there is none.
void ready();
/// The configuration is read again; `ready()` ends it.
void reloading();
void stopping();

}  // namespace Linux::ServiceManager
