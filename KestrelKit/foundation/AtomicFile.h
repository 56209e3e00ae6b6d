#pragma once

#include <KestrelKit/foundation/FileError.h>

#include <expected>
#include <filesystem>
#include <string_view>

namespace kestrel {

/// Replaces all of `file` by `bytes`, so that whoever reads it at any instant, or after a crash at any
/// instant, finds what was there or what is there now, whole.
///
/// The bytes are written into a temporary file in the same folder (`.kestrel-replacement-` and a UUID) and
/// flushed to the disk; that one is renamed to `file`, and the folder is flushed. A symbolic link is
/// followed: what it leads to is replaced, or made, and the link stays. A file that was there keeps its
/// permissions, and its owner where this process may give it away; a new one has the mode 0600. Other links
/// to the old file keep the old bytes. A signal that comes between and a write that falls short are carried
/// on from.
///
/// A failure up to and including the renaming leaves what was there; one after it, in flushing the folder,
/// leaves the new file, of which a crash of the machine may then leave the old one. Any thread, any number of
/// processes: the last one stands.
[[nodiscard]] std::expected<void, FileError> replaceFile(const std::filesystem::path& file,
                                                         std::string_view bytes);

/// Removes the temporary files that replaceFile() left behind in the folder of `file`, where a process ended
/// within it. Those of a writer that lives are locked by it (flock()), and stay. To be called when a program
/// starts to use `file`; what cannot be removed stays for the next one.
void removeAbandonedReplacements(const std::filesystem::path& file) noexcept;

/// Gives `file`, or what it leads to as a symbolic link, another name in its folder: its own and `suffix`, or
/// `suffix` with `-2`, `-3` and so on, the first that is free. Gives that name. A folder is not moved: that
/// is std::errc::is_a_directory. Nor is a device, which other programs need where it is: that is
/// std::errc::not_supported.
[[nodiscard]] std::expected<std::filesystem::path, FileError> setAside(const std::filesystem::path& file,
                                                                       std::string_view suffix);

/// Gives what setAside() renamed to `aside` its name `file` again, unless something has that by now.
void putBack(const std::filesystem::path& aside, const std::filesystem::path& file);

/// Removes `file`, or what it leads to as a symbolic link; the link stays. A folder is not removed.
[[nodiscard]] std::expected<void, FileError> removeFile(const std::filesystem::path& file);

}  // namespace kestrel
