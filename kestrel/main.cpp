#include <KestrelKit/model/Disclaimer.h>
#include <command-line/Program.h>
#include <kestrel/CheckCommand.h>
#include <kestrel/CircadianCommands.h>
#include <kestrel/FormatCommands.h>
#include <kestrel/JsonCommand.h>
#include <kestrel/LogCommands.h>
#include <kestrel/MoodStateCommands.h>
#include <kestrel/NoteCommands.h>
#include <kestrel/SignalCommands.h>
#include <kestrel/StoreCommands.h>

#include <string>

using namespace kestrel;

int main(int argc, char** argv) {
  Program program({
      .command =
          {
              .name = "kestrel",
              .purpose = "classify and forecast mood states from daily records",
              .details = "Most commands read one JSON document: the file that they are given, or standard "
                         "input. Each does one thing and prints the result as one line of JSON. Nothing is "
                         "printed before all is done; what is wrong is said in one line on standard error, "
                         "with the place in the document, such as days[3].posts."
                         "\n\n"
                         "Days are yyyy-MM-dd in the Gregorian calendar, in the time zone of the run. "
                         "Instants are ISO 8601 text with a zone, such as 2024-05-01T08:30:00Z or "
                         "2024-05-01T10:30:00+02:00. Options may stand before or after the command; a "
                         "number below 0, and what comes after --, is no option."
                         "\n\n" +
                         std::string(Disclaimer::text),
              .example = "kestrel state 'Major Depressive'",
              .exampleDoes = R"(Prints what this state is called today: "Severe Depression".)",
          },
      .refusal =
          "The input was read and refused: it is not what the command reads, a check found problems, a "
          "result has no JSON form, or memory has run out.",
      .fileFailure = "The input could not be read, or standard output, the log or the shared defaults could "
                     "not be written.",
  });
  program.addTimeZoneOption();
  addPrettyOption(program);
  addMoodStateCommands(program);
  addCircadianCommands(program);
  addSignalCommands(program);
  addNoteCommands(program);
  addFormatCommands(program);
  addCheckCommand(program);
  addLogCommands(program);
  addStoreCommands(program);
  return program.run(argc, argv);
}
