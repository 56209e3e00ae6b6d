<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
    <context>
        <name>AccessCapsule</name>
        <message>
            <source>Ready</source>
            <translation>Bereit</translation>
        </message>
        <message>
            <source>Permission needed</source>
            <translation>Berechtigung nötig</translation>
        </message>
        <message>
            <source>Unavailable</source>
            <translation>Nicht verfügbar</translation>
        </message>
        <message>
            <source>Checking</source>
            <translation>Wird geprüft</translation>
        </message>
        <message>
            <source>Messages access: %1</source>
            <translation>Zugriff auf Nachrichten: %1</translation>
        </message>
    </context>
    <context>
        <name>AccessPrompt</name>
        <message>
            <source>Full Disk Access is required to read the local Messages database.</source>
            <translation>Zum Lesen der lokalen Nachrichten-Datenbank ist Festplattenvollzugriff nötig.</translation>
        </message>
        <message>
            <source>Messages history isn’t available on this Mac.</source>
            <translation>Auf diesem Mac ist kein Nachrichtenverlauf verfügbar.</translation>
        </message>
        <message>
            <source>Open System Settings, enable Tidewell under Full Disk Access, then quit and reopen the installed app. Access applies to the copy in Applications, not the copy inside the DMG.</source>
            <translation>Öffne die Systemeinstellungen, aktiviere Tidewell unter „Festplattenvollzugriff“, beende dann die installierte App und öffne sie erneut. Der Zugriff gilt für die Kopie in „Programme“, nicht für die im DMG.</translation>
        </message>
        <message>
            <source>Open Full Disk Access</source>
            <translation>Festplattenvollzugriff öffnen</translation>
        </message>
        <message>
            <source>Check Again</source>
            <translation>Erneut prüfen</translation>
        </message>
    </context>
    <context>
        <name>DayRow</name>
        <message>
            <source>%1: %2</source>
            <translation>%1: %2</translation>
        </message>
    </context>
    <context>
        <name>HealthBox</name>
        <message>
            <source>Apple Health</source>
            <translation>Apple Health</translation>
        </message>
        <message>
            <source>Handled on iPhone</source>
            <translation>Läuft auf dem iPhone</translation>
        </message>
        <message>
            <source>The iPhone app reads permitted HealthKit signals directly and keeps them local unless Sync is enabled. This Mac app does not ask for an Apple Health export.</source>
            <translation>Die iPhone-App liest erlaubte HealthKit-Signale direkt und behält sie lokal, solange die Synchronisierung nicht aktiviert ist. Diese Mac-App fragt nicht nach einem Apple-Health-Export.</translation>
        </message>
    </context>
    <context>
        <name>LocalBadge</name>
        <message>
            <source>Local dashboard</source>
            <translation>Lokale Übersicht</translation>
        </message>
        <message>
            <source>LOCAL</source>
            <translation>LOKAL</translation>
        </message>
        <message>
            <source>Entirely inside the app</source>
            <translation>Vollständig in der App</translation>
        </message>
        <message>
            <source>This dashboard and its Messages summaries run locally. No browser, hosted page, or network connection is required.</source>
            <translation>Diese Übersicht und ihre Auswertungen laufen lokal. Weder Browser noch Webseite noch Netzverbindung sind nötig.</translation>
        </message>
    </context>
    <context>
        <name>MainWindow</name>
        <message>
            <source>Tidewell</source>
            <translation>Tidewell</translation>
        </message>
        <message>
            <source>Scan Messages Activity</source>
            <translation>Nachrichtenaktivität auswerten</translation>
        </message>
    </context>
    <context>
        <name>MessagesBox</name>
        <message>
            <source>Messages activity</source>
            <translation>Nachrichtenaktivität</translation>
        </message>
        <message>
            <source>Tidewell can calculate daily sent and received counts, active conversation counts, timing, and average message length. It does not copy or save message bodies, attachments, names, handles, or conversation titles.</source>
            <translation>Tidewell kann je Tag gesendete und empfangene Nachrichten, aktive Unterhaltungen, Uhrzeiten und die mittlere Länge der Nachrichten ermitteln. Texte, Anhänge, Namen, Adressen und Titel von Unterhaltungen werden weder kopiert noch gespeichert.</translation>
        </message>
        <message>
            <source>Checking Messages access…</source>
            <translation>Zugriff auf Nachrichten wird geprüft …</translation>
        </message>
    </context>
    <context>
        <name>MessagesCompanionRootView</name>
        <message>
            <source>Local dashboard</source>
            <translation>Lokale Übersicht</translation>
        </message>
        <message>
            <source>Tidewell for Mac keeps private, consent-first summaries close to their source.</source>
            <translation>Tidewell für Mac hält private Auswertungen, die es nur mit Einwilligung gibt, nah an ihrer Quelle.</translation>
        </message>
    </context>
    <context>
        <name>MessagesSummaryFigures</name>
        <message numerus="yes">
            <source>%lld sent</source>
            <translation>
                <numerusform>%lld gesendet</numerusform>
                <numerusform>%lld gesendet</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%lld received</source>
            <translation>
                <numerusform>%lld empfangen</numerusform>
                <numerusform>%lld empfangen</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>MetricTile</name>
        <message>
            <source>%1: %2</source>
            <extracomment>A figure as a screen reader says it: what was counted, and the count.</extracomment>
            <translation>%1: %2</translation>
        </message>
    </context>
    <context>
        <name>MetricTiles</name>
        <message>
            <source>Active days</source>
            <translation>Aktive Tage</translation>
        </message>
        <message>
            <source>Sent</source>
            <translation>Gesendet</translation>
        </message>
        <message>
            <source>Received</source>
            <translation>Empfangen</translation>
        </message>
        <message>
            <source>Late night</source>
            <translation>Spät nachts</translation>
        </message>
    </context>
    <context>
        <name>RecentDays</name>
        <message>
            <source>Recent daily activity</source>
            <translation>Aktivität der letzten Tage</translation>
        </message>
    </context>
    <context>
        <name>ScanPanel</name>
        <message>
            <source>Nothing is read until you start a scan. Results stay in this app for the current session and are not uploaded.</source>
            <translation>Gelesen wird erst, wenn du eine Auswertung startest. Ergebnisse bleiben für diese Sitzung in der App und werden nicht hochgeladen.</translation>
        </message>
        <message>
            <source>Scan Again</source>
            <translation>Erneut auswerten</translation>
        </message>
        <message>
            <source>Scan Locally</source>
            <translation>Lokal auswerten</translation>
        </message>
    </context>
    <context>
        <name>ScanProgress</name>
        <message>
            <source>Summarizing on this Mac…</source>
            <translation>Wird auf diesem Mac ausgewertet …</translation>
        </message>
    </context>
    <context>
        <name>SummaryView</name>
        <message>
            <source>No Messages activity was found in the selected window.</source>
            <translation>Im gewählten Zeitraum wurde keine Nachrichtenaktivität gefunden.</translation>
        </message>
    </context>
    <context>
        <name>TimeWindowPicker</name>
        <message>
            <source>Time window</source>
            <translation>Zeitraum</translation>
        </message>
        <message>
            <source>30 days</source>
            <translation>30 Tage</translation>
        </message>
        <message>
            <source>90 days</source>
            <translation>90 Tage</translation>
        </message>
        <message>
            <source>1 year</source>
            <translation>1 Jahr</translation>
        </message>
    </context>
    <context>
        <name>kestrel::companion::TrayMenu</name>
        <message>
            <source>Open Tidewell</source>
            <translation>Tidewell öffnen</translation>
        </message>
        <message>
            <source>Scan Messages Activity</source>
            <translation>Nachrichtenaktivität auswerten</translation>
        </message>
        <message>
            <source>Quit Tidewell</source>
            <translation>Tidewell beenden</translation>
        </message>
        <message>
            <source>Tidewell</source>
            <translation>Tidewell</translation>
        </message>
    </context>
    <context>
        <name>WindowMenuBar</name>
        <message>
            <source>Menu bar</source>
            <translation>Menüleiste</translation>
        </message>
        <message>
            <source>Tidewell</source>
            <translation>Tidewell</translation>
        </message>
    </context>
    <context>
        <name>MessagesScanError</name>
        <message>
            <source>Messages history isn’t available on this Mac.</source>
            <translation>Auf diesem Mac ist kein Nachrichtenverlauf verfügbar.</translation>
        </message>
        <message>
            <source>Tidewell can’t read Messages yet. Enable Full Disk Access, then try again.</source>
            <translation>Tidewell kann Nachrichten noch nicht lesen. Aktiviere den Festplattenvollzugriff und versuche es erneut.</translation>
        </message>
        <message>
            <source>This version of the Messages database isn’t supported yet.</source>
            <translation>Diese Version der Nachrichten-Datenbank wird noch nicht unterstützt.</translation>
        </message>
        <message>
            <source>Messages activity couldn’t be summarized. No history was saved or sent.</source>
            <translation>Die Nachrichtenaktivität konnte nicht ausgewertet werden. Es wurde kein Verlauf gespeichert oder gesendet.</translation>
        </message>
    </context>
    <context>
        <name>Disclaimer</name>
        <message>
            <source>Tidewell is a tracking and personal-insight tool. It is not a medical device, not FDA-cleared, and not a substitute for clinical care.</source>
            <translation>Tidewell dient der Selbstbeobachtung und persönlichen Einsicht. Es ist kein Medizinprodukt, nicht von der FDA zugelassen und kein Ersatz für klinische Versorgung.</translation>
        </message>
    </context>
</TS>
