#include "app/sub_application.h"

namespace sonorelle {

void CkvoSubApplicationBase::ReleaseStateBuffer() { std::string().swap(stateBuffer); }

} // namespace sonorelle
