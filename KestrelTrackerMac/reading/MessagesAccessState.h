#pragma once

namespace kestrel::companion {

/// Whether the Messages database can be read.
enum class MessagesAccessState {
  checking,             ///< A probe is running, or none has finished yet.
  ready,                ///< The database opened read-only.
  needsFullDiskAccess,  ///< The file is invisible, or opening it was refused for lack of permission.
  unavailable,          ///< Opening it failed for another reason.
};

}  // namespace kestrel::companion
