<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>FooterBar</name>
    <message numerus="yes">
        <source>Generate %n Variations</source>
        <translation>
            <numerusform>Generate %n Variation</numerusform>
            <numerusform>Generate %n Variations</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>ModelCard</name>
    <message>
        <source>No model for this folder yet. It learns on this Mac — nothing leaves your machine. It&apos;s created automatically when you generate, or you can train it now.</source>
        <translation>No model for this folder yet. It learns on this computer — nothing leaves your machine. It&apos;s created automatically when you generate, or you can train it now.</translation>
    </message>
</context>
<context>
    <name>ResultsStrip</name>
    <message>
        <source>Show in Finder</source>
        <translation>Show in File Manager</translation>
    </message>
</context>
<context>
    <name>Words</name>
    <message numerus="yes">
        <source>%1 of %n steps</source>
        <translation>
            <numerusform>%1 of %n step</numerusform>
            <numerusform>%1 of %n steps</numerusform>
        </translation>
    </message>
</context>
</TS>
