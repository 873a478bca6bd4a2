<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>zelmor::widget::SettingsDialog</name>
    <message>
        <source>Language:</source>
        <comment>settings.general.language</comment>
        <translation>语言：</translation>
    </message>
</context>
</TS>
