#include <KestrelKit/foundation/Instant.h>
#include <KestrelKit/model/Disclaimer.h>

int main() {
  return kestrel::Disclaimer::text.starts_with("Tidewell") && kestrel::ReferenceClock::now() > kestrel::Instant{} ? 0 : 1;
}
