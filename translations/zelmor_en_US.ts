<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>zelmor::widget::SettingsDialog</name>
    <message>
        <source>Language:</source>
        <comment>settings.general.language</comment>
        <translation>Language:</translation>
    </message>
</context>
</TS>
