// SPDX-License-Identifier: MIT
// What workers answer about GPU preferences. The library loads the file of the first request's HOME
// once, so a worker serves one HOME; and since an initialisation empties the library's list, a
// worker that is asked about preferences never enters an adapter.
#pragma once

#include "tools/smi/worker/message.hpp"
#include "tools/smi/worker/session.hpp"

#include <string_view>

namespace nimba::smi {

// Each takes a request as request_text gives it and answers with the list that the library holds
// then. All of them load the file before anything else: the library's removal does not.
Message answer_prefer_get(Session& session, std::string_view arguments);
Message answer_prefer_set(Session& session, std::string_view arguments);
Message answer_prefer_remove(Session& session, std::string_view arguments);

}  // namespace nimba::smi
