#include <KestrelKit/ComplicationStore.h>
#include <KestrelKit/SharedAppGroup.h>
#include <KestrelKit/SnapshotStore.h>
#include <KestrelKit/WatchConnectionEvidenceStore.h>
#include <KestrelKit/WatchStateSnapshot.h>
#include <KestrelKit/WatchStateTransfer.h>
#include <KestrelKit/formats/DashboardSnapshot.h>
#include <KestrelKit/foundation/AppGroupContainer.h>
#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/foundation/Iso8601.h>
#include <KestrelKit/foundation/JsonField.h>
#include <KestrelKit/foundation/Record.h>
#include <KestrelKit/foundation/SqliteDefaults.h>
#include <KestrelKit/foundation/Utf8.h>
#include <KestrelKit/foundation/Uuid.h>
#include <KestrelKit/model/JSONCoders.h>
#include <KestrelKit/model/KestrelState.h>
#include <command-line/InputFile.h>
#include <command-line/ValueOption.h>
#include <kestrel/JsonCommand.h>
#include <kestrel/StoreCommands.h>

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kestrel {
namespace {

using Output = std::expected<std::string, Failure>;
using Suite = std::shared_ptr<SqliteDefaults>;

std::optional<std::string> anyText(const std::string& text) { return text; }

std::optional<std::string> utf8Text(const std::string& text) {
  return invalidUtf8(text) ? std::nullopt : std::optional(text);
}

/// The suite that the option `--suite` names, or the application group's.
class SuiteOption {
 public:
  explicit SuiteOption(Command& store) {
    addValueOption(store.arguments(), "--suite", path_, anyText, "a path",
                   "The file that the shared defaults are in.")
        ->type_name("PATH")
        ->default_str("that of the shared container");
  }

  /// What `operation` has for the suite; a failure where something could not be read or written.
  Output perform(const std::function<Output(const Suite&)>& operation) const {
    const auto container = AppGroupContainer::of(sharedAppGroup);
    if (!path_ && !container) {
      return failure("the shared defaults", "there is no folder for them: the home is no absolute path");
    }
    const auto suite = path_ ? SqliteDefaults::open(*path_) : SqliteDefaults::open(*container);
    if (!suite) {
      return failure(path_ ? *path_ : container->folder().string(), suite.error());
    }
    Output output = operation(*suite);
    for (const auto& reason : {(*suite)->writeFailure(), (*suite)->readFailure()}) {
      if (output && reason) {
        return failure((*suite)->file().string(), *reason);
      }
    }
    return output;
  }

 private:
  static std::unexpected<Failure> failure(const std::string& what, const std::string& reason) {
    return std::unexpected(Failure{ExitStatus::fileFailed, (what.empty() ? "\"\"" : what) + ": " + reason});
  }

  std::optional<std::string> path_;
};

using SharedOption = std::shared_ptr<SuiteOption>;

/// What `print` makes of the `Record` in `file`.
template <class Record>
Output taken(const InputFile& file, const std::function<Output(const Record&)>& print) {
  return printedFrom(
      file, [](std::string_view text) { return JSONCoders::decoder.decode<Record>(text); }, print);
}

void addInstant(Command& command, const std::string& name, std::optional<Instant>& instant,
                const std::string& description) {
  addValueOption(command.arguments(), name, instant, instantFromIso8601,
                 "an instant such as 2024-05-01T08:30:00Z", description)
      ->type_name("T")
      ->required();
}

void addState(Command& store, const SharedOption& option) {
  Command& command = store.addCommand({
      .name = "state",
      .purpose = "print the latest mood state, or set it",
      .details = R"(Prints the latest state as JSON text, "Unknown" where none is stored. With TEXT it is )"
                 "set first: a state's name or one that earlier releases stored, in exactly that spelling; "
                 R"(any other text is "Unknown".)",
      .example = R"(kestrel store --suite "$(mktemp -d)/suite.sqlite" state Hypomanic)",
      .exampleDoes = R"(Stores "Hypomania" in a suite of its own, and prints it.)",
  });
  const auto text = std::make_shared<std::optional<std::string>>();
  addValueOption(command.arguments(), "TEXT", *text, anyText, "a text", "The state to set.")
      ->type_name("TEXT");
  command.setAction([&command, option, text] {
    return option->perform([&](const Suite& suite) {
      const ComplicationStore complication(suite);
      if (*text) {
        complication.setLatestState(KestrelState::fromStoredValue(**text));
      }
      return printed(command, complication.latestState());
    });
  });
}

/// What `snapshot` prints.
struct StoredSnapshot {
  std::optional<DashboardSnapshot> snapshot{};
  std::optional<Instant> updatedAt{};

  static JsonFields jsonFields() {
    using R = StoredSnapshot;
    static constexpr JsonField fields[] = {
        field<&R::snapshot>("snapshot"),
        field<&R::updatedAt>("updatedAt"),
    };
    return fields;
  }
};

void addSnapshot(Command& store, const SharedOption& option) {
  Command& command = store.addCommand({
      .name = "snapshot",
      .purpose = "print, store or clear the dashboard's latest snapshot",
      .details = R"(Prints {"snapshot", "updatedAt"}: the latest snapshot of the dashboard, and when it was )"
                 "stored. What is not stored, or cannot be understood, is absent.",
      .example = R"(kestrel store --suite "$(mktemp -d)/suite.sqlite" snapshot)",
      .exampleDoes = "Prints {}, since a suite that does not exist yet has no snapshot.",
  });
  command.setAction([&command, option] {
    return option->perform([&](const Suite& suite) {
      const SnapshotStore snapshots(suite);
      return printed(command,
                     StoredSnapshot{.snapshot = snapshots.latest(), .updatedAt = snapshots.updatedAt()});
    });
  });

  Command& put = command.addCommand({
      .name = "put",
      .purpose = "store a snapshot, with the present time",
      .details = "Reads a snapshot as kestrel check dashboard-snapshot does, and stores it as the latest "
                 "one. Prints nothing.",
      .example = R"(echo '{"essential": {"viz": {"daily": []}}}' |
  kestrel store --suite "$(mktemp -d)/suite.sqlite" snapshot put)",
      .exampleDoes = "Stores a snapshot without days in a suite of its own.",
  });
  const auto file = std::make_shared<InputFile>(put.arguments(), "The snapshot.");
  put.setAction([option, file] {
    return option->perform([&](const Suite& suite) {
      return taken<DashboardSnapshot>(*file, [&](const DashboardSnapshot& snapshot) {
        SnapshotStore(suite).setLatest(snapshot);
        return std::string();
      });
    });
  });

  Command& clear = command.addCommand({
      .name = "clear",
      .purpose = "remove the latest snapshot",
      .details = "Removes the latest snapshot, and when it was stored. Prints nothing.",
      .example = R"(kestrel store --suite "$(mktemp -d)/suite.sqlite" snapshot clear)",
      .exampleDoes = "Clears a suite of its own, in which there is none.",
  });
  clear.setAction([option] {
    return option->perform([](const Suite& suite) {
      SnapshotStore(suite).setLatest(std::nullopt);
      return std::string();
    });
  });
}

/// What `phone` prints.
struct StoredPhoneState {
  std::optional<WatchStateSnapshot> snapshot{};
  std::optional<Instant> receivedAt{};

  static JsonFields jsonFields() {
    using R = StoredPhoneState;
    static constexpr JsonField fields[] = {
        field<&R::snapshot>("snapshot"),
        field<&R::receivedAt>("receivedAt"),
    };
    return fields;
  }
};

void addPhone(Command& store, const SharedOption& option) {
  Command& command = store.addCommand({
      .name = "phone",
      .purpose = "print or store the state that the phone sent last",
      .details = R"(Prints {"snapshot", "receivedAt"}: the last watch state that came from the phone, )"
                 R"({"version", "deliveryID", "stateRaw", "confidencePercent", "generatedAt"}, and when it )"
                 "was received. What is not stored, or cannot be understood, is absent.",
      .example = R"(kestrel store --suite "$(mktemp -d)/suite.sqlite" phone)",
      .exampleDoes = "Prints {}, since a suite that does not exist yet has no state.",
  });
  command.setAction([&command, option] {
    return option->perform([&](const Suite& suite) {
      const ComplicationStore complication(suite);
      return printed(command, StoredPhoneState{.snapshot = complication.phoneSnapshot(),
                                               .receivedAt = complication.phoneSnapshotReceivedAt()});
    });
  });

  Command& put = command.addCommand({
      .name = "put",
      .purpose = "store a state that came from the phone",
      .details = "Reads a watch state and stores it, unless the one that is stored was generated later. "
                 "Prints true, or false where it was not stored.",
      .example = R"(echo '{"version": 1, "stateRaw": "Mania", "confidencePercent": 80,
  "deliveryID": "2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10",
  "generatedAt": "2024-05-01T08:30:00Z"}' |
  kestrel store --suite "$(mktemp -d)/suite.sqlite" \
  phone put --received-at 2024-05-01T08:30:02Z)",
      .exampleDoes = "Prints true: nothing newer is stored in a suite of its own.",
  });
  struct Options {
    std::optional<Instant> receivedAt;
    bool updateLatest = false;
  };
  const auto options = std::make_shared<Options>();
  const auto file = std::make_shared<InputFile>(put.arguments(), "The watch state.");
  addInstant(put, "--received-at", options->receivedAt, "When the state was received.");
  put.arguments().add_flag("--update-latest", options->updateLatest,
                           "Make it the latest state, too (see kestrel store state).");
  put.setAction([&put, option, options, file] {
    return option->perform([&](const Suite& suite) {
      return taken<WatchStateSnapshot>(*file, [&](const WatchStateSnapshot& snapshot) {
        using enum ComplicationStore::LatestState;
        return printed(put, ComplicationStore(suite).storePhoneSnapshot(
                                snapshot, *options->receivedAt, options->updateLatest ? isUpdated : stays));
      });
    });
  });
}

using Mutation = std::function<void(WatchConnectionEvidence& evidence)>;

/// Records in the evidence what `mutation` does to it. Prints nothing.
Output recorded(const Suite& suite, const Mutation& mutation) {
  WatchConnectionEvidenceStore(suite).update(mutation);
  return std::string();
}

/// A command that records what became of a watch state.
void addTransferOfState(Command& evidence, const SharedOption& option, CommandDescription description,
                        const std::string& at,
                        void (*record)(WatchConnectionEvidence&, const WatchStateSnapshot&, Instant)) {
  Command& command = evidence.addCommand(std::move(description));
  const auto date = std::make_shared<std::optional<Instant>>();
  const auto file = std::make_shared<InputFile>(command.arguments(), "The watch state.");
  addInstant(command, "--at", *date, at);
  command.setAction([option, date, file, record] {
    return option->perform([&](const Suite& suite) {
      return taken<WatchStateSnapshot>(*file, [&](const WatchStateSnapshot& snapshot) {
        return recorded(suite, [&](WatchConnectionEvidence& current) { record(current, snapshot, **date); });
      });
    });
  });
}

void addAcknowledged(Command& evidence, const SharedOption& option) {
  Command& command = evidence.addCommand({
      .name = "acknowledged",
      .purpose = "record that the watch's receipt arrived",
      .details = "A receipt for any other delivery than the one sent last changes nothing. Prints nothing.",
      .example = R"(kestrel store --suite "$(mktemp -d)/suite.sqlite" evidence \
  acknowledged 2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10 --at 2024-05-01T08:31:00Z)",
      .exampleDoes = "Changes nothing, since nothing was sent.",
  });
  struct Receipt {
    std::optional<Uuid> deliveryID;
    std::optional<Instant> at;
  };
  const auto receipt = std::make_shared<Receipt>();
  addValueOption(command.arguments(), "DELIVERY-ID", receipt->deliveryID, uuidFromText,
                 "a UUID such as 2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10",
                 "The delivery that the receipt names.")
      ->type_name("DELIVERY-ID")
      ->required();
  addInstant(command, "--at", receipt->at, "When the receipt arrived.");
  command.setAction([option, receipt] {
    return option->perform([&](const Suite& suite) {
      return recorded(suite, [&](WatchConnectionEvidence& current) {
        WatchStateTransfer::recordAcknowledgement(current, *receipt->deliveryID, *receipt->at);
      });
    });
  });
}

void addError(Command& evidence, const SharedOption& option) {
  Command& command = evidence.addCommand({
      .name = "error",
      .purpose = "record that a transfer failed",
      .details = "Stores TEXT as the last error; the next transfer that goes well clears it. Prints nothing.",
      .example = R"(kestrel store --suite "$(mktemp -d)/suite.sqlite" \
  evidence error 'the watch is not reachable')",
      .exampleDoes = "Records an error in a suite of its own.",
  });
  const auto text = std::make_shared<std::optional<std::string>>();
  addValueOption(command.arguments(), "TEXT", *text, utf8Text, "UTF-8 text", "What went wrong.")
      ->type_name("TEXT")
      ->required();
  command.setAction([option, text] {
    return option->perform([&](const Suite& suite) {
      return recorded(
          suite, [&](WatchConnectionEvidence& current) { WatchStateTransfer::recordError(current, **text); });
    });
  });
}

void addEvidence(Command& store, const SharedOption& option) {
  Command& command = store.addCommand({
      .name = "evidence",
      .purpose = "print what is known of deliveries to the watch, or record more",
      .details = R"(Prints {"isPaired", "isWatchAppInstalled", "isReachable", "lastSentAt", )"
                 R"("lastSentDeliveryID", "lastAcknowledgedAt", "lastAcknowledgedDeliveryID", )"
                 R"("lastReceivedStateAt", "lastReceivedState", "lastReceivedConfidence", "lastError"}, )"
                 "without those that there is nothing to say of. Where nothing is stored no watch is "
                 "paired.",
      .example = R"(kestrel store --suite "$(mktemp -d)/suite.sqlite" evidence)",
      .exampleDoes = "Prints the evidence of a suite that does not exist yet: no watch.",
  });
  command.setAction([&command, option] {
    return option->perform(
        [&](const Suite& suite) { return printed(command, WatchConnectionEvidenceStore(suite).current()); });
  });

  addTransferOfState(command, option,
                     {
                         .name = "sent",
                         .purpose = "record that a state was sent to the watch",
                         .details = "Reads the watch state that was sent. Prints nothing.",
                         .example = R"(echo '{"version": 1, "stateRaw": "Mania", "confidencePercent": 80,
  "deliveryID": "2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10",
  "generatedAt": "2024-05-01T08:30:00Z"}' |
  kestrel store --suite "$(mktemp -d)/suite.sqlite" \
  evidence sent --at 2024-05-01T08:30:01Z)",
                         .exampleDoes = "Records a delivery in a suite of its own.",
                     },
                     "When it was sent.", WatchStateTransfer::recordSent);
  addTransferOfState(command, option,
                     {
                         .name = "received",
                         .purpose = "record that a state was received",
                         .details = "Reads the watch state that was received. Prints nothing.",
                         .example = R"(echo '{"version": 1, "stateRaw": "Hypomanic", "confidencePercent": 80,
  "deliveryID": "2F1C0B7A-5D5E-4C1B-9A38-0D5C4E7B9F10",
  "generatedAt": "2024-05-01T08:30:00Z"}' |
  kestrel store --suite "$(mktemp -d)/suite.sqlite" \
  evidence received --at 2024-05-01T08:30:02Z)",
                         .exampleDoes = R"(Records that "Hypomania" was received, in a suite of its own.)",
                     },
                     "When it was received.", WatchStateTransfer::recordReceived);
  addAcknowledged(command, option);
  addError(command, option);
}

}  // namespace

void addStoreCommands(Command& program) {
  Command& store = program.addCommand({
      .name = "store",
      .purpose = "read and change what the front ends share on this device",
      .details = "Works on the shared defaults of the application group: defaults.sqlite in the folder "
                 "group.app.tidewell.shared, which is under XDG_DATA_HOME, or .local/share in the home "
                 "directory. Reading creates nothing; the first change creates the folder and the file, for "
                 "their owner alone.",
      .example = "kestrel store state --help",
      .exampleDoes = "Prints what that command takes and prints.",
  });
  const auto option = std::make_shared<SuiteOption>(store);
  addState(store, option);
  addSnapshot(store, option);
  addPhone(store, option);
  addEvidence(store, option);
}

}  // namespace kestrel
