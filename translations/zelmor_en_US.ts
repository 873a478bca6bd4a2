<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>QObject</name>
    <message>
        <source>Screenshot (%1 × %2 px)</source>
        <comment>ai.preview.title</comment>
        <translation>Screenshot (%1 × %2 px)</translation>
    </message>
    <message>
        <source>点击关闭预览</source>
        <comment>ai.tip.closePreview</comment>
        <translation>Click to close the preview</translation>
    </message>
    <message>
        <source>Screenshot preview</source>
        <comment>ai.preview.image</comment>
        <translation>Screenshot preview</translation>
    </message>
</context>
<context>
    <name>zelmor::manager::ActionManager</name>
    <message>
        <source>Open AI Settings</source>
        <comment>ai.notConfigured.open</comment>
        <translation>Open AI Settings</translation>
    </message>
    <message>
        <source>Capture failed</source>
        <comment>capture.failed.title</comment>
        <translation>Capture failed</translation>
    </message>
    <message>
        <source>OCR</source>
        <comment>tray.ocr</comment>
        <translation>OCR</translation>
    </message>
    <message>
        <source>🔍 正在提取文字，请稍候...</source>
        <comment>ai.ocr.processing</comment>
        <translation>🔍 Extracting text, please wait...</translation>
    </message>
    <message>
        <source>文字识别 (OCR)</source>
        <comment>ai.ocr.title</comment>
        <translation>Text recognition (OCR)</translation>
    </message>
    <message>
        <source>正在提取文字...</source>
        <comment>ai.ocr.processing</comment>
        <translation>Extracting text...</translation>
    </message>
    <message>
        <source>识别失败</source>
        <comment>ai.ocr.failed</comment>
        <translation>Recognition failed</translation>
    </message>
    <message>
        <source>提取成功</source>
        <comment>ai.ocr.success</comment>
        <translation>Text extracted</translation>
    </message>
    <message>
        <source>Translation</source>
        <comment>tray.translate</comment>
        <translation>Translation</translation>
    </message>
    <message>
        <source>🌐 正在翻译图片内容，请稍候...</source>
        <comment>ai.translate.processing</comment>
        <translation>🌐 Translating the image, please wait...</translation>
    </message>
    <message>
        <source>截图翻译</source>
        <comment>ai.translate.title</comment>
        <translation>Screenshot translation</translation>
    </message>
    <message>
        <source>正在翻译图片...</source>
        <comment>ai.translate.processing</comment>
        <translation>Translating the image...</translation>
    </message>
    <message>
        <source>翻译失败</source>
        <comment>ai.translate.failed</comment>
        <translation>Translation failed</translation>
    </message>
    <message>
        <source>翻译成功</source>
        <comment>ai.translate.success</comment>
        <translation>Translated</translation>
    </message>
    <message>
        <source>截图翻译结果</source>
        <comment>ai.translate.dialogTitle</comment>
        <translation>Screenshot translation result</translation>
    </message>
    <message>
        <source>AI 自动标注</source>
        <comment>ai.annotate.processing.title</comment>
        <translation>AI auto annotation</translation>
    </message>
    <message>
        <source>✏️ AI 正在智能识别并标注 UI 控件，请稍候...</source>
        <comment>ai.annotate.processing.body</comment>
        <translation>✏️ AI is finding and annotating the UI controls, please wait...</translation>
    </message>
    <message>
        <source>AI 自动标注</source>
        <comment>ai.annotate.title</comment>
        <translation>AI auto annotation</translation>
    </message>
    <message>
        <source>正在识别 UI 控件...</source>
        <comment>ai.annotate.processing</comment>
        <translation>Finding UI controls...</translation>
    </message>
    <message>
        <source>标注失败</source>
        <comment>ai.annotate.failed</comment>
        <translation>Annotation failed</translation>
    </message>
    <message>
        <source>标注成功 (%1 个控件)</source>
        <comment>ai.annotate.success</comment>
        <translation>Annotated (%1 controls)</translation>
    </message>
    <message>
        <source>Annotation copied (%1x%2)</source>
        <translation>Annotation copied (%1x%2)</translation>
    </message>
    <message>
        <source>Re-edit failed</source>
        <comment>capture.failed.title</comment>
        <translation>Re-edit failed</translation>
    </message>
    <message>
        <source>Image could not be loaded.</source>
        <translation>Image could not be loaded.</translation>
    </message>
    <message>
        <source>Region copied to clipboard (%1x%2)</source>
        <translation>Region copied to clipboard (%1x%2)</translation>
    </message>
    <message>
        <source>No image</source>
        <comment>tray.clipboard.empty.title</comment>
        <translation>No image</translation>
    </message>
    <message>
        <source>Clipboard doesn&apos;t contain an image.</source>
        <translation>Clipboard doesn&apos;t contain an image.</translation>
    </message>
    <message>
        <source>Copied</source>
        <comment>capture.copied.title</comment>
        <translation>Copied</translation>
    </message>
    <message>
        <source>Save failed</source>
        <comment>capture.savefail.title</comment>
        <translation>Save failed</translation>
    </message>
    <message>
        <source>Saved</source>
        <comment>capture.saved.title</comment>
        <translation>Saved</translation>
    </message>
    <message>
        <source>Captured</source>
        <comment>capture.captured.title</comment>
        <translation>Captured</translation>
    </message>
    <message>
        <source>Captured %1x%2</source>
        <translation>Captured %1x%2</translation>
    </message>
    <message>
        <source>No window</source>
        <comment>capture.window.empty.title</comment>
        <translation>No window</translation>
    </message>
    <message>
        <source>Could not detect foreground window.</source>
        <translation>Could not detect foreground window.</translation>
    </message>
    <message>
        <source>Drag over the window to capture</source>
        <comment>overlay.hint.window</comment>
        <translation>Drag over the window to capture</translation>
    </message>
    <message>
        <source>Window captured: %1</source>
        <translation>Window captured: %1</translation>
    </message>
    <message>
        <source>Delayed capture</source>
        <comment>capture.delayed.title</comment>
        <translation>Delayed capture</translation>
    </message>
    <message>
        <source>Capturing in %1 seconds...</source>
        <translation>Capturing in %1 seconds...</translation>
    </message>
    <message>
        <source>Delayed capture done (%1x%2)</source>
        <translation>Delayed capture done (%1x%2)</translation>
    </message>
    <message>
        <source>Elevation canceled</source>
        <comment>tray.elevation.canceled</comment>
        <translation>Elevation canceled</translation>
    </message>
    <message>
        <source>Running Zelmor as administrator is not supported on X11 desktops.</source>
        <translation>Running Zelmor as administrator is not supported on X11 desktops.</translation>
    </message>
    <message>
        <source>AI not configured</source>
        <comment>ai.notConfigured.title</comment>
        <translation>AI not configured</translation>
    </message>
    <message>
        <source>Please add or configure AI Provider and API Key in Settings → AI.</source>
        <comment>ai.notConfigured.body</comment>
        <translation>Please add or configure AI Provider and API Key in Settings → AI.</translation>
    </message>
    <message>
        <source>请帮我分析或总结以下提取的文字：</source>
        <comment>ai.ocr.chatPrompt</comment>
        <translation>Please analyze or summarize the following extracted text:</translation>
    </message>
    <message>
        <source>GIF failed</source>
        <comment>record.gif.failed</comment>
        <translation>GIF failed</translation>
    </message>
    <message>
        <source>Recording stopped</source>
        <comment>record.gif.memoryLimit.title</comment>
        <translation>Recording stopped</translation>
    </message>
    <message>
        <source>The recording reached its memory limit of %1 MB and stopped. The frames so far are in the editor.</source>
        <comment>record.gif.memoryLimit.body</comment>
        <translation>The recording reached its memory limit of %1 MB and stopped. The frames so far are in the editor.</translation>
    </message>
    <message>
        <source>Scroll capture</source>
        <comment>record.scroll.saved</comment>
        <translation>Scroll capture</translation>
    </message>
    <message>
        <source>Stitched image saved (%1x%2)</source>
        <translation>Stitched image saved (%1x%2)</translation>
    </message>
    <message>
        <source>Scroll failed</source>
        <comment>record.scroll.failed</comment>
        <translation>Scroll failed</translation>
    </message>
    <message>
        <source>The stitched image reached its memory limit of %1 MB; what was stitched so far is saved.</source>
        <comment>record.scroll.memoryLimit.body</comment>
        <translation>The stitched image reached its memory limit of %1 MB; what was stitched so far is saved.</translation>
    </message>
    <message>
        <source>The page jumped further than the region in one step, so the image ends there.</source>
        <comment>record.scroll.autoTooFast.body</comment>
        <translation>The page jumped further than the region in one step, so the image ends there.</translation>
    </message>
    <message>
        <source>Gestures on</source>
        <comment>tray.gesture.on</comment>
        <translation>Gestures on</translation>
    </message>
    <message>
        <source>Right-drag to gesture. (R=next pin, L=prev, D=history, DR=capture, DL=clear pins)</source>
        <comment>tray.gesture.on.body</comment>
        <translation>Right-drag to gesture. (R=next pin, L=prev, D=history, DR=capture, DL=clear pins)</translation>
    </message>
    <message>
        <source>Gestures unavailable</source>
        <comment>tray.gesture.unavailable</comment>
        <translation>Gestures unavailable</translation>
    </message>
    <message>
        <source>This desktop lets no program watch the mouse, so gestures cannot work here.</source>
        <comment>tray.gesture.unavailable.body</comment>
        <translation>This desktop lets no program watch the mouse, so gestures cannot work here.</translation>
    </message>
    <message>
        <source>Recorded without marks</source>
        <comment>record.unmarked.title</comment>
        <translation>Recorded without marks</translation>
    </message>
    <message>
        <source>This desktop lets no program see clicks and keys, so recordings show no click marks or key chips.</source>
        <comment>record.unmarked.body</comment>
        <translation>This desktop lets no program see clicks and keys, so recordings show no click marks or key chips.</translation>
    </message>
    <message>
        <source>Gestures off</source>
        <comment>tray.gesture.off</comment>
        <translation>Gestures off</translation>
    </message>
    <message>
        <source>Mouse gestures disabled.</source>
        <comment>tray.gesture.off.body</comment>
        <translation>Mouse gestures disabled.</translation>
    </message>
    <message>
        <source>Update available</source>
        <comment>tray.update.available</comment>
        <translation>Update available</translation>
    </message>
    <message>
        <source>Zelmor %1 is available.</source>
        <translation>Zelmor %1 is available.</translation>
    </message>
    <message>
        <source>Up to date</source>
        <comment>tray.update.uptodate</comment>
        <translation>Up to date</translation>
    </message>
    <message>
        <source>You&apos;re on the latest version.</source>
        <translation>You&apos;re on the latest version.</translation>
    </message>
    <message>
        <source>Update check failed</source>
        <comment>tray.update.failed</comment>
        <translation>Update check failed</translation>
    </message>
    <message>
        <source>Restart as administrator was not granted.</source>
        <translation>Restart as administrator was not granted.</translation>
    </message>
    <message>
        <source>This desktop gives Zelmor single screenshots through its screenshot portal, not the stream of pictures that recording and scroll capture need. Record and scroll on sway or another wlroots desktop, or in an X11 session.</source>
        <comment>capture.failed.noScreenStream</comment>
        <translation>This desktop gives Zelmor single screenshots through its screenshot portal, not the stream of pictures that recording and scroll capture need. Record and scroll on sway or another wlroots desktop, or in an X11 session.</translation>
    </message>
</context>
<context>
    <name>zelmor::manager::TaskManager</name>
    <message>
        <source>已取消</source>
        <translation>Cancelled</translation>
    </message>
</context>
<context>
    <name>zelmor::manager::TrayService</name>
    <message>
        <source>Zelmor</source>
        <comment>tray.tooltip</comment>
        <translation>Zelmor</translation>
    </message>
    <message>
        <source>Zelmor · v%1</source>
        <comment>tray.header</comment>
        <translation>Zelmor · v%1</translation>
    </message>
    <message>
        <source>✨ AI Assistant &amp; Chat</source>
        <comment>tray.aiChat</comment>
        <translation>✨ AI Assistant &amp; Chat</translation>
    </message>
    <message>
        <source>📷 Send Screenshot to AI</source>
        <comment>tray.aiCapture</comment>
        <translation>📷 Send Screenshot to AI</translation>
    </message>
    <message>
        <source>🔤 Extract Text (OCR)</source>
        <comment>tray.ocr</comment>
        <translation>🔤 Extract Text (OCR)</translation>
    </message>
    <message>
        <source>✏️ AI Auto Annotate UI</source>
        <comment>tray.aiAnnotate</comment>
        <translation>✏️ AI Auto Annotate UI</translation>
    </message>
    <message>
        <source>Region capture</source>
        <comment>tray.captureRegion</comment>
        <translation>Region capture</translation>
    </message>
    <message>
        <source>Fullscreen capture</source>
        <comment>tray.captureFullscreen</comment>
        <translation>Fullscreen capture</translation>
    </message>
    <message>
        <source>Window capture</source>
        <comment>tray.captureWindow</comment>
        <translation>Window capture</translation>
    </message>
    <message>
        <source>Delayed capture</source>
        <comment>tray.captureDelayed</comment>
        <translation>Delayed capture</translation>
    </message>
    <message>
        <source>%1 s</source>
        <comment>tray.delayed.secs</comment>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>Record GIF</source>
        <comment>tray.recordGif</comment>
        <translation>Record GIF</translation>
    </message>
    <message>
        <source>Scroll capture</source>
        <comment>tray.scrollCapture</comment>
        <translation>Scroll capture</translation>
    </message>
    <message>
        <source>Annotate screen</source>
        <comment>tray.annotateScreen</comment>
        <translation>Annotate screen</translation>
    </message>
    <message>
        <source>From clipboard</source>
        <comment>tray.fromClipboard</comment>
        <translation>From clipboard</translation>
    </message>
    <message>
        <source>History</source>
        <comment>tray.history</comment>
        <translation>History</translation>
    </message>
    <message>
        <source>Open output directory</source>
        <comment>tray.openOutputDir</comment>
        <translation>Open output directory</translation>
    </message>
    <message>
        <source>Pin sessions</source>
        <comment>tray.pinSessions</comment>
        <translation>Pin sessions</translation>
    </message>
    <message>
        <source>Hide all pins</source>
        <comment>tray.pinHideAll</comment>
        <translation>Hide all pins</translation>
    </message>
    <message>
        <source>Restore all pins</source>
        <comment>tray.pinRestoreAll</comment>
        <translation>Restore all pins</translation>
    </message>
    <message>
        <source>Clear all pins</source>
        <comment>tray.pinClearAll</comment>
        <translation>Clear all pins</translation>
    </message>
    <message>
        <source>Theme</source>
        <comment>tray.theme</comment>
        <translation>Theme</translation>
    </message>
    <message>
        <source>Light</source>
        <comment>tray.theme.light</comment>
        <translation>Light</translation>
    </message>
    <message>
        <source>Dark</source>
        <comment>tray.theme.dark</comment>
        <translation>Dark</translation>
    </message>
    <message>
        <source>System</source>
        <comment>tray.theme.system</comment>
        <translation>System</translation>
    </message>
    <message>
        <source>Settings...</source>
        <comment>tray.settings</comment>
        <translation>Settings...</translation>
    </message>
    <message>
        <source>About</source>
        <comment>tray.about</comment>
        <translation>About</translation>
    </message>
    <message>
        <source>Shortcut cheat sheet</source>
        <comment>tray.shortcutSheet</comment>
        <translation>Shortcut cheat sheet</translation>
    </message>
    <message>
        <source>License...</source>
        <comment>tray.license</comment>
        <translation>License...</translation>
    </message>
    <message>
        <source>Restart as admin</source>
        <comment>tray.restartAdmin</comment>
        <translation>Restart as admin</translation>
    </message>
    <message>
        <source>Quit</source>
        <comment>tray.quit</comment>
        <translation>Quit</translation>
    </message>
    <message>
        <source>Mouse gestures</source>
        <comment>tray.mouseGesture</comment>
        <translation>Mouse gestures</translation>
    </message>
    <message>
        <source>Check for updates</source>
        <comment>tray.checkUpdates</comment>
        <translation>Check for updates</translation>
    </message>
    <message>
        <source>%1 (%2 unavailable)</source>
        <comment>tray.hotkeyRefused</comment>
        <translation>%1 (%2 unavailable)</translation>
    </message>
</context>
<context>
    <name>zelmor::service::ai::AiApiService</name>
    <message>
        <source>AI Base URL is not configured. Please open Zelmor Settings -&gt; AI to set API Base URL &amp; Key.</source>
        <translation>AI Base URL is not configured. Please open Zelmor Settings -&gt; AI to set API Base URL &amp; Key.</translation>
    </message>
    <message>
        <source>Max tool execution depth (%1 steps) exceeded</source>
        <translation>Max tool execution depth (%1 steps) exceeded</translation>
    </message>
    <message>
        <source>Cancelled</source>
        <translation>Cancelled</translation>
    </message>
    <message>
        <source>Tesseract OCR (local) only recognises text. For translation, UI marking and chat, add a provider with a language model in Settings → AI and make it the default.</source>
        <translation>Tesseract OCR (local) only recognises text. For translation, UI marking and chat, add a provider with a language model in Settings → AI and make it the default.</translation>
    </message>
</context>
<context>
    <name>zelmor::service::capture::CaptureService</name>
    <message>
        <source>Zelmor runs through Xwayland here, which cannot see the Wayland desktop. Start Zelmor on Wayland itself (QT_QPA_PLATFORM=wayland).</source>
        <comment>capture.failed.xwayland</comment>
        <translation>Zelmor runs through Xwayland here, which cannot see the Wayland desktop. Start Zelmor on Wayland itself (QT_QPA_PLATFORM=wayland).</translation>
    </message>
    <message>
        <source>Failed to grab screens.</source>
        <comment>capture.failed.body</comment>
        <translation>Failed to grab screens.</translation>
    </message>
    <message>
        <source>This Wayland desktop lets Zelmor copy no screen: it offers no screen copy protocol (wlr-screencopy) and no screenshot portal. Use a wlroots desktop such as sway, or install xdg-desktop-portal with your desktop&apos;s portal backend.</source>
        <comment>capture.failed.noScreencopy</comment>
        <translation>This Wayland desktop lets Zelmor copy no screen: it offers no screen copy protocol (wlr-screencopy) and no screenshot portal. Use a wlroots desktop such as sway, or install xdg-desktop-portal with your desktop&apos;s portal backend.</translation>
    </message>
    <message>
        <source>The desktop&apos;s screenshot portal was refused or its dialog was closed. Capture again and allow Zelmor to take the screenshot.</source>
        <comment>capture.failed.portalRefused</comment>
        <translation>The desktop&apos;s screenshot portal was refused or its dialog was closed. Capture again and allow Zelmor to take the screenshot.</translation>
    </message>
    <message>
        <source>The desktop&apos;s screenshot portal could not take a screenshot. Check that xdg-desktop-portal and your desktop&apos;s portal backend are installed.</source>
        <comment>capture.failed.portalFailed</comment>
        <translation>The desktop&apos;s screenshot portal could not take a screenshot. Check that xdg-desktop-portal and your desktop&apos;s portal backend are installed.</translation>
    </message>
    <message>
        <source>The desktop&apos;s screenshot portal did not answer within 30 seconds; its dialog may have waited for you. Capture again and answer the dialog.</source>
        <comment>capture.failed.portalNoAnswer</comment>
        <translation>The desktop&apos;s screenshot portal did not answer within 30 seconds; its dialog may have waited for you. Capture again and answer the dialog.</translation>
    </message>
</context>
<context>
    <name>zelmor::service::updater::UpdateService</name>
    <message>
        <source>The release feed did not answer in time.</source>
        <comment>updater.timeout</comment>
        <translation>The release feed did not answer in time.</translation>
    </message>
    <message>
        <source>The release feed sent more than a release.</source>
        <comment>updater.tooLarge</comment>
        <translation>The release feed sent more than a release.</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::AiChatPanel</name>
    <message>
        <source>Show all (%1 characters)</source>
        <comment>ai.bubble.showAll</comment>
        <translation>Show all (%1 characters)</translation>
    </message>
    <message>
        <source>No AI provider for chat: set one up in Settings → AI</source>
        <comment>ai.provider.none</comment>
        <translation>No AI provider for chat: set one up in Settings → AI</translation>
    </message>
    <message>
        <source>(No screenshot attached) Use 📷 Add Screenshot first, then ask AI</source>
        <comment>ai.attach.emptyHintNoKey</comment>
        <translation>(No screenshot attached) Use 📷 Add Screenshot first, then ask AI</translation>
    </message>
    <message>
        <source>+ New Chat</source>
        <comment>ai.btn.newChat</comment>
        <translation>+ New Chat</translation>
    </message>
    <message>
        <source>Search chat titles...</source>
        <comment>ai.search.placeholder</comment>
        <translation>Search chat titles...</translation>
    </message>
    <message>
        <source>Chat sessions</source>
        <comment>ai.sessions.name</comment>
        <translation>Chat sessions</translation>
    </message>
    <message>
        <source>ℹ 当前是 OpenAI 模型 (Chat Completions 路径)，不会调用 Zelmor 的截图/历史/标注工具。如需工具能力，可：
  • 切到 Anthropic Claude 或 Qwen 模型；
  • 或在「设置 ⚙️ -&gt; AI」开启「OpenAI 走 Responses API」开关。</source>
        <comment>ai.warning.openai</comment>
        <translation>ℹ This is an OpenAI model (Chat Completions path); it does not call Zelmor&apos;s capture, history or annotation tools. To use the tools, either:
  • switch to an Anthropic Claude or Qwen model, or
  • turn on &quot;Use the Responses API for OpenAI&quot; in Settings ⚙️ -&gt; AI.</translation>
    </message>
    <message>
        <source>Ask AI about this screenshot</source>
        <comment>ai.topbar.title</comment>
        <translation>Ask AI about this screenshot</translation>
    </message>
    <message>
        <source>Model</source>
        <comment>ai.model.name</comment>
        <translation>Model</translation>
    </message>
    <message>
        <source>📷 Add Screenshot</source>
        <comment>ai.btn.capture</comment>
        <translation>📷 Add Screenshot</translation>
    </message>
    <message>
        <source>Capture screen region to current chat</source>
        <comment>ai.tip.capture</comment>
        <translation>Capture screen region to current chat</translation>
    </message>
    <message>
        <source>Search Chat</source>
        <comment>ai.btn.searchThisChat</comment>
        <translation>Search Chat</translation>
    </message>
    <message>
        <source>🗑️ Clear</source>
        <comment>ai.btn.clearChat</comment>
        <translation>🗑️ Clear</translation>
    </message>
    <message>
        <source>Clear current chat history</source>
        <comment>ai.tip.clear</comment>
        <translation>Clear current chat history</translation>
    </message>
    <message>
        <source>AI settings</source>
        <comment>ai.tip.settings</comment>
        <translation>AI settings</translation>
    </message>
    <message>
        <source>I can help you operate this computer</source>
        <comment>ai.welcome.title</comment>
        <translation>I can help you operate this computer</translation>
    </message>
    <message>
        <source>Annotate screenshot, recognize text, open apps, operate software windows — just say the word</source>
        <comment>ai.welcome.desc</comment>
        <translation>Annotate screenshot, recognize text, open apps, operate software windows — just say the word</translation>
    </message>
    <message>
        <source>Capture &amp; highlight key points</source>
        <comment>ai.card.annotate.desc</comment>
        <translation>Capture &amp; highlight key points</translation>
    </message>
    <message>
        <source>Launch app or website</source>
        <comment>ai.card.openApp.desc</comment>
        <translation>Launch app or website</translation>
    </message>
    <message>
        <source>Find contact &amp; send message</source>
        <comment>ai.card.operateUI.desc</comment>
        <translation>Find contact &amp; send message</translation>
    </message>
    <message>
        <source>Screen OCR</source>
        <comment>ai.card.ocr.desc</comment>
        <translation>Screen OCR</translation>
    </message>
    <message>
        <source>Screenshot translation</source>
        <comment>ai.card.translate.desc</comment>
        <translation>Screenshot translation</translation>
    </message>
    <message>
        <source>Extract key information</source>
        <comment>ai.card.summarize.desc</comment>
        <translation>Extract key information</translation>
    </message>
    <message>
        <source>Annotate Screenshot</source>
        <comment>ai.card.annotate</comment>
        <translation>Annotate Screenshot</translation>
    </message>
    <message>
        <source>Open Application</source>
        <comment>ai.card.openApp</comment>
        <translation>Open Application</translation>
    </message>
    <message>
        <source>Operate Software</source>
        <comment>ai.card.operateUI</comment>
        <translation>Operate Software</translation>
    </message>
    <message>
        <source>Recognize Text</source>
        <comment>ai.card.ocr</comment>
        <translation>Recognize Text</translation>
    </message>
    <message>
        <source>Translate Content</source>
        <comment>ai.card.translate</comment>
        <translation>Translate Content</translation>
    </message>
    <message>
        <source>Summarize Points</source>
        <comment>ai.card.summarize</comment>
        <translation>Summarize Points</translation>
    </message>
    <message>
        <source>Screenshot processing</source>
        <comment>ai.wf.label</comment>
        <translation>Screenshot processing</translation>
    </message>
    <message>
        <source>移除截图</source>
        <comment>ai.tip.removeAttach</comment>
        <translation>Remove screenshot</translation>
    </message>
    <message>
        <source>输入消息...(Enter 发送，Shift+Enter 换行)</source>
        <comment>ai.input.placeholder</comment>
        <translation>Type a message... (Enter to send, Shift+Enter for a new line)</translation>
    </message>
    <message>
        <source>Message</source>
        <comment>ai.input.name</comment>
        <translation>Message</translation>
    </message>
    <message>
        <source>📷 Attachment Added</source>
        <comment>ai.toast.attachPastedTitle</comment>
        <translation>📷 Attachment Added</translation>
    </message>
    <message>
        <source>Screenshot image pasted from clipboard</source>
        <comment>ai.toast.attachPastedBody</comment>
        <translation>Screenshot image pasted from clipboard</translation>
    </message>
    <message>
        <source>Picture not attached</source>
        <comment>ai.toast.pictureRefusedTitle</comment>
        <translation>Picture not attached</translation>
    </message>
    <message>
        <source>就绪</source>
        <comment>ai.status.ready</comment>
        <translation>Ready</translation>
    </message>
    <message>
        <source>Stop (Esc)</source>
        <comment>ai.btn.stopTip</comment>
        <translation>Stop (Esc)</translation>
    </message>
    <message>
        <source>发送消息 (Enter)</source>
        <comment>ai.btn.sendTip</comment>
        <translation>Send message (Enter)</translation>
    </message>
    <message>
        <source>本次请求将发送到 %1</source>
        <comment>ai.provider.info</comment>
        <translation>This request will be sent to %1</translation>
    </message>
    <message>
        <source>No Image</source>
        <comment>ai.attach.none</comment>
        <translation>No Image</translation>
    </message>
    <message>
        <source>(No screenshot attached) Press %1 to capture screenshot first, then ask AI</source>
        <comment>ai.attach.emptyHint</comment>
        <translation>(No screenshot attached) Press %1 to capture screenshot first, then ask AI</translation>
    </message>
    <message>
        <source>点击放大预览截图</source>
        <comment>ai.tip.previewImage</comment>
        <translation>Click to enlarge the screenshot</translation>
    </message>
    <message>
        <source>Attached screenshot (%1 × %2 px)</source>
        <comment>ai.attach.info</comment>
        <translation>Attached screenshot (%1 × %2 px)</translation>
    </message>
    <message>
        <source>Image Chat</source>
        <comment>ai.session.imageChat</comment>
        <translation>Image Chat</translation>
    </message>
    <message>
        <source>New Chat</source>
        <comment>ai.session.newTitle</comment>
        <translation>New Chat</translation>
    </message>
    <message>
        <source>(Image Only)</source>
        <comment>ai.send.imageOnly</comment>
        <translation>(Image Only)</translation>
    </message>
    <message>
        <source>AI 正在思考回复中...</source>
        <comment>ai.btn.thinkingTip</comment>
        <translation>AI is thinking about its reply...</translation>
    </message>
    <message>
        <source>✨ AI 正在思考中...</source>
        <comment>ai.status.thinking</comment>
        <translation>✨ AI is thinking...</translation>
    </message>
    <message>
        <source>Zelmor AI</source>
        <comment>ai.role.ai</comment>
        <translation>Zelmor AI</translation>
    </message>
    <message>
        <source>AI 正在思考中 · · ·</source>
        <comment>ai.thinking.anim</comment>
        <translation>AI is thinking · · ·</translation>
    </message>
    <message>
        <source>AI 正在思考中%1</source>
        <comment>ai.thinking.dots</comment>
        <translation>AI is thinking%1</translation>
    </message>
    <message>
        <source>已为您完成桌面自动化操作！</source>
        <comment>ai.mcp.completed</comment>
        <translation>The desktop automation is done!</translation>
    </message>
    <message>
        <source>MCP 工具执行失败 (%1): %2</source>
        <comment>ai.mcp.failed</comment>
        <translation>MCP tool failed (%1): %2</translation>
    </message>
    <message>
        <source>✅ MCP 工具已成功执行: %1</source>
        <comment>ai.mcp.success</comment>
        <translation>✅ MCP tool ran: %1</translation>
    </message>
    <message>
        <source>⚠️ 自动化工具执行异常 [%1]: %2</source>
        <comment>ai.tool.err</comment>
        <translation>⚠️ Automation tool error [%1]: %2</translation>
    </message>
    <message>
        <source>⚡ 已自动执行桌面操控: %1</source>
        <comment>ai.tool.succ</comment>
        <translation>⚡ Desktop action performed: %1</translation>
    </message>
    <message>
        <source>Request failed: %1</source>
        <comment>ai.error.fmt</comment>
        <translation>Request failed: %1</translation>
    </message>
    <message>
        <source>Help me open Notepad</source>
        <comment>ai.prompt.openApp</comment>
        <translation>Help me open Notepad</translation>
    </message>
    <message>
        <source>Please help me operate current software window:</source>
        <comment>ai.prompt.operateUi</comment>
        <translation>Please help me operate current software window:</translation>
    </message>
    <message>
        <source>Please select screen region...</source>
        <comment>ai.status.capturing</comment>
        <translation>Please select screen region...</translation>
    </message>
    <message>
        <source>Recognize text on current screen (OCR)</source>
        <comment>ai.prompt.ocr</comment>
        <translation>Recognize text on current screen (OCR)</translation>
    </message>
    <message>
        <source>Please analyze key areas and important information of this screenshot and provide annotations.</source>
        <comment>ai.prompt.annotate</comment>
        <translation>Please analyze key areas and important information of this screenshot and provide annotations.</translation>
    </message>
    <message>
        <source>Translate text content in current screenshot</source>
        <comment>ai.prompt.translate</comment>
        <translation>Translate text content in current screenshot</translation>
    </message>
    <message>
        <source>Summarize this screenshot in 3-5 key points</source>
        <comment>ai.prompt.explain</comment>
        <translation>Summarize this screenshot in 3-5 key points</translation>
    </message>
    <message>
        <source>You</source>
        <comment>ai.role.user</comment>
        <translation>You</translation>
    </message>
    <message>
        <source>System</source>
        <comment>ai.role.sys</comment>
        <translation>System</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::AiProviderItemWidget</name>
    <message>
        <source>New Provider</source>
        <translation>New Provider</translation>
    </message>
    <message>
        <source>Default provider</source>
        <comment>settings.ai.list.default</comment>
        <translation>Default provider</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::AiSettingsPage</name>
    <message>
        <source>AI</source>
        <comment>settings.ai.title</comment>
        <translation>AI</translation>
    </message>
    <message>
        <source>Configure providers for chat, OCR, translate, and annotation. Add one or more, then pick a default.</source>
        <comment>settings.ai.subtitle</comment>
        <translation>Configure providers for chat, OCR, translate, and annotation. Add one or more, then pick a default.</translation>
    </message>
    <message>
        <source>Providers</source>
        <comment>settings.ai.list.name</comment>
        <translation>Providers</translation>
    </message>
    <message>
        <source>Add</source>
        <comment>settings.ai.list.add</comment>
        <translation>Add</translation>
    </message>
    <message>
        <source>Remove</source>
        <comment>settings.ai.list.remove</comment>
        <translation>Remove</translation>
    </message>
    <message>
        <source>Set default</source>
        <comment>settings.ai.list.setDefault</comment>
        <translation>Set default</translation>
    </message>
    <message>
        <source>Share</source>
        <comment>settings.ai.list.share</comment>
        <translation>Share</translation>
    </message>
    <message>
        <source>Paste import</source>
        <comment>settings.ai.list.pasteImport</comment>
        <translation>Paste import</translation>
    </message>
    <message>
        <source>Name</source>
        <comment>settings.ai.form.name</comment>
        <translation>Name</translation>
    </message>
    <message>
        <source>Provider name</source>
        <translation>Provider name</translation>
    </message>
    <message>
        <source>Preset</source>
        <comment>settings.ai.form.preset</comment>
        <translation>Preset</translation>
    </message>
    <message>
        <source>Custom</source>
        <translation>Custom</translation>
    </message>
    <message>
        <source>Endpoint</source>
        <comment>settings.ai.form.endpoint</comment>
        <translation>Endpoint</translation>
    </message>
    <message>
        <source>API key</source>
        <comment>settings.ai.form.apiKey</comment>
        <translation>API key</translation>
    </message>
    <message>
        <source>Show</source>
        <comment>settings.ai.reveal</comment>
        <translation>Show</translation>
    </message>
    <message>
        <source>Test</source>
        <comment>settings.ai.form.test</comment>
        <translation>Test</translation>
    </message>
    <message>
        <source>Chat model</source>
        <comment>settings.ai.form.model</comment>
        <translation>Chat model</translation>
    </message>
    <message>
        <source>API keys are stored locally and never uploaded. Use Test to verify credentials before applying.</source>
        <translation>API keys are stored locally and never uploaded. Use Test to verify credentials before applying.</translation>
    </message>
    <message>
        <source>Open AI chat...</source>
        <translation>Open AI chat...</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Apply</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>New Provider</source>
        <comment>settings.ai.list.newProvider</comment>
        <translation>New Provider</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Add</translation>
    </message>
    <message>
        <source>Failed to add provider. The history database is not open.</source>
        <comment>settings.ai.list.add.failed</comment>
        <translation>Failed to add provider. The history database is not open.</translation>
    </message>
    <message>
        <source>Share</source>
        <translation>Share</translation>
    </message>
    <message>
        <source>Provider config copied to clipboard.</source>
        <comment>settings.ai.share.copied</comment>
        <translation>Provider config copied to clipboard.</translation>
    </message>
    <message>
        <source>Paste import</source>
        <translation>Paste import</translation>
    </message>
    <message>
        <source>Clipboard is empty.</source>
        <comment>settings.ai.pasteImport.empty</comment>
        <translation>Clipboard is empty.</translation>
    </message>
    <message>
        <source>Invalid JSON. Expected {name, protocol, baseUrl, apiKey, model}.</source>
        <comment>settings.ai.pasteImport.invalid</comment>
        <translation>Invalid JSON. Expected {name, protocol, baseUrl, apiKey, model}.</translation>
    </message>
    <message>
        <source>Hide</source>
        <comment>settings.ai.reveal.hide</comment>
        <translation>Hide</translation>
    </message>
    <message>
        <source>Test</source>
        <translation>Test</translation>
    </message>
    <message>
        <source>API key is empty.</source>
        <comment>settings.ai.test.noKey</comment>
        <translation>API key is empty.</translation>
    </message>
    <message>
        <source>Testing...</source>
        <comment>settings.ai.form.testing</comment>
        <translation>Testing...</translation>
    </message>
    <message>
        <source>Test Succeeded</source>
        <comment>settings.ai.test.success</comment>
        <translation>Test Succeeded</translation>
    </message>
    <message>
        <source>Test Failed</source>
        <comment>settings.ai.test.failed</comment>
        <translation>Test Failed</translation>
    </message>
    <message>
        <source>AI test failed</source>
        <comment>settings.ai.test.title.failed</comment>
        <translation>AI test failed</translation>
    </message>
    <message>
        <source>Recognition languages joined by +, such as eng+chi_sim</source>
        <comment>settings.ai.form.ocrLanguages</comment>
        <translation>Recognition languages joined by +, such as eng+chi_sim</translation>
    </message>
    <message>
        <source>AI test succeeded</source>
        <comment>settings.ai.test.title.succeeded</comment>
        <translation>AI test succeeded</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::CaptureOverlay</name>
    <message>
        <source>Drag a region to record</source>
        <comment>overlay.hint.gif</comment>
        <translation>Drag a region to record</translation>
    </message>
    <message>
        <source>Drag a region for scrolling capture</source>
        <comment>overlay.hint.scroll</comment>
        <translation>Drag a region for scrolling capture</translation>
    </message>
    <message>
        <source>Drag a region to capture</source>
        <comment>overlay.hint.region</comment>
        <translation>Drag a region to capture</translation>
    </message>
    <message>
        <source>Zelmor capture</source>
        <comment>overlay.title</comment>
        <translation>Zelmor capture</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::ChatTextViewer</name>
    <message>
        <source>Close</source>
        <comment>ai.viewer.close</comment>
        <translation>Close</translation>
    </message>
    <message>
        <source>Copy all</source>
        <comment>ai.viewer.copy</comment>
        <translation>Copy all</translation>
    </message>
    <message>
        <source>Whole message</source>
        <comment>ai.viewer.title</comment>
        <translation>Whole message</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::GifEditorDialog</name>
    <message>
        <source>GIF Frame Editor</source>
        <comment>gif.editor.title</comment>
        <translation>GIF Frame Editor</translation>
    </message>
    <message>
        <source>(Paused - Space: Play/Pause | Left/Right: Step | Delete: Remove | Ctrl+Z: Restore)</source>
        <comment>gif.editor.tip</comment>
        <translation>(Paused - Space: Play/Pause | Left/Right: Step | Delete: Remove | Ctrl+Z: Restore)</translation>
    </message>
    <message>
        <source>关闭</source>
        <comment>gif.editor.close</comment>
        <translation>Close</translation>
    </message>
    <message>
        <source>预览</source>
        <comment>gif.editor.preview</comment>
        <translation>Preview</translation>
    </message>
    <message>
        <source>⏮ 上一帧</source>
        <comment>gif.editor.prevFrame</comment>
        <translation>⏮ Previous frame</translation>
    </message>
    <message>
        <source>▶ 播放</source>
        <comment>gif.editor.play</comment>
        <translation>▶ Play</translation>
    </message>
    <message>
        <source>下一帧 ⏭</source>
        <comment>gif.editor.nextFrame</comment>
        <translation>Next frame ⏭</translation>
    </message>
    <message>
        <source>帧位置</source>
        <comment>gif.editor.position</comment>
        <translation>Frame position</translation>
    </message>
    <message>
        <source>帧缩略图</source>
        <comment>gif.editor.thumbnails</comment>
        <translation>Frame thumbnails</translation>
    </message>
    <message>
        <source>🗑️ 删除选中帧</source>
        <comment>gif.editor.delSel</comment>
        <translation>🗑️ Delete selected frames</translation>
    </message>
    <message>
        <source>✂️ 仅保留框选帧</source>
        <comment>gif.editor.keepSel</comment>
        <translation>✂️ Keep only selected frames</translation>
    </message>
    <message>
        <source>⏮ 删首帧</source>
        <comment>gif.editor.delFirst</comment>
        <translation>⏮ Delete first frame</translation>
    </message>
    <message>
        <source>⏭ 删尾帧</source>
        <comment>gif.editor.delLast</comment>
        <translation>⏭ Delete last frame</translation>
    </message>
    <message>
        <source>↺ 还原所有帧</source>
        <comment>gif.editor.restore</comment>
        <translation>↺ Restore all frames</translation>
    </message>
    <message>
        <source>帧率 FPS:</source>
        <comment>gif.editor.fps</comment>
        <translation>Frame rate (FPS):</translation>
    </message>
    <message>
        <source>取消</source>
        <comment>common.cancel</comment>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>💾 另存为...</source>
        <comment>gif.editor.saveAs</comment>
        <translation>💾 Save as...</translation>
    </message>
    <message>
        <source>💾 导出保存</source>
        <comment>gif.editor.export</comment>
        <translation>💾 Export</translation>
    </message>
    <message>
        <source>另存为 GIF</source>
        <comment>gif.editor.saveAsTitle</comment>
        <translation>Save as GIF</translation>
    </message>
    <message>
        <source>GIF Animation (*.gif)</source>
        <comment>gif.editor.filter</comment>
        <translation>GIF Animation (*.gif)</translation>
    </message>
    <message>
        <source>导出错误</source>
        <comment>gif.editor.errTitle</comment>
        <translation>Export error</translation>
    </message>
    <message>
        <source>无法导出包含 0 帧的空 GIF。</source>
        <comment>gif.editor.errBody</comment>
        <translation>Cannot export an empty GIF with 0 frames.</translation>
    </message>
    <message>
        <source>⏳ 正在后台合成 GIF...</source>
        <comment>gif.editor.exporting</comment>
        <translation>⏳ Encoding the GIF in the background...</translation>
    </message>
    <message>
        <source>⏳ 正在后台极速合成编码高清晰 GIF，请稍候...</source>
        <comment>gif.editor.exportingText</comment>
        <translation>⏳ Encoding a high-quality GIF in the background, please wait...</translation>
    </message>
    <message>
        <source>Frame %1 of %2</source>
        <comment>gif.editor.exportProgress</comment>
        <translation>Frame %1 of %2</translation>
    </message>
    <message>
        <source>GIF 编码合成失败，请重试。</source>
        <comment>gif.editor.errBody</comment>
        <translation>Encoding the GIF failed. Please try again.</translation>
    </message>
    <message>
        <source>GIF 导出成功</source>
        <comment>record.gif.saved</comment>
        <translation>GIF exported</translation>
    </message>
    <message>
        <source>已合成导出高清晰 GIF 并自动记入历史记录:
%1</source>
        <comment>record.gif.savedBody</comment>
        <translation>The high-quality GIF was exported and added to the history:
%1</translation>
    </message>
    <message>
        <source>暂无剩余帧</source>
        <comment>gif.editor.empty</comment>
        <translation>No frames left</translation>
    </message>
    <message>
        <source>第 %1 / %2 帧</source>
        <comment>gif.editor.frameCount</comment>
        <translation>Frame %1 / %2</translation>
    </message>
    <message>
        <source>Discard recording?</source>
        <comment>gif.editor.discardTitle</comment>
        <translation>Discard recording?</translation>
    </message>
    <message>
        <source>This recording of %1 s has not been saved. Discard it?</source>
        <comment>gif.editor.discardBody</comment>
        <translation>This recording of %1 s has not been saved. Discard it?</translation>
    </message>
    <message>
        <source>⏸ 暂停</source>
        <comment>gif.editor.pause</comment>
        <translation>⏸ Pause</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::HistoryDetailPanel</name>
    <message>
        <source>Details</source>
        <comment>history.detail.title</comment>
        <translation>Details</translation>
    </message>
    <message>
        <source>Preview</source>
        <comment>history.detail.preview</comment>
        <translation>Preview</translation>
    </message>
    <message>
        <source>File name</source>
        <comment>history.detail.k.file</comment>
        <translation>File name</translation>
    </message>
    <message>
        <source>Dimensions</source>
        <comment>history.detail.k.size</comment>
        <translation>Dimensions</translation>
    </message>
    <message>
        <source>Size</source>
        <comment>history.detail.k.bytes</comment>
        <translation>Size</translation>
    </message>
    <message>
        <source>Created</source>
        <comment>history.detail.k.created</comment>
        <translation>Created</translation>
    </message>
    <message>
        <source>SHA-256</source>
        <comment>history.detail.k.sha</comment>
        <translation>SHA-256</translation>
    </message>
    <message>
        <source>Tags</source>
        <comment>history.detail.tagsLabel</comment>
        <translation>Tags</translation>
    </message>
    <message>
        <source>Separate multiple tags with commas...</source>
        <comment>history.detail.tagsPlaceholder</comment>
        <translation>Separate multiple tags with commas...</translation>
    </message>
    <message>
        <source>OCR</source>
        <comment>history.detail.ocrLabel</comment>
        <translation>OCR</translation>
    </message>
    <message>
        <source>(none) — run OCR on the preview to fill</source>
        <comment>history.detail.ocrPlaceholder</comment>
        <translation>(none) — run OCR on the preview to fill</translation>
    </message>
    <message>
        <source>Copy to clipboard</source>
        <comment>history.detail.copy</comment>
        <translation>Copy to clipboard</translation>
    </message>
    <message>
        <source>Favorite</source>
        <comment>history.detail.favorite</comment>
        <translation>Favorite</translation>
    </message>
    <message>
        <source>Export</source>
        <comment>history.detail.export</comment>
        <translation>Export</translation>
    </message>
    <message>
        <source>Locate</source>
        <comment>history.detail.locate</comment>
        <translation>Locate</translation>
    </message>
    <message>
        <source>Delete</source>
        <comment>history.detail.delete</comment>
        <translation>Delete</translation>
    </message>
    <message>
        <source>(no image)</source>
        <comment>history.detail.noImage</comment>
        <translation>(no image)</translation>
    </message>
    <message>
        <source>%1×%2 px is too large to open with the memory of this computer.</source>
        <comment>history.tooLarge</comment>
        <translation>%1×%2 px is too large to open with the memory of this computer.</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::HistoryPanel</name>
    <message>
        <source>Search</source>
        <comment>history.search</comment>
        <translation>Search</translation>
    </message>
    <message>
        <source>Search file name, tags or OCR text...</source>
        <comment>history.searchPlaceholder</comment>
        <translation>Search file name, tags or OCR text...</translation>
    </message>
    <message>
        <source>All</source>
        <comment>history.tab.all</comment>
        <translation>All</translation>
    </message>
    <message>
        <source>Today</source>
        <comment>history.tab.today</comment>
        <translation>Today</translation>
    </message>
    <message>
        <source>This week</source>
        <comment>history.tab.week</comment>
        <translation>This week</translation>
    </message>
    <message>
        <source>Favorites</source>
        <comment>history.tab.favorites</comment>
        <translation>Favorites</translation>
    </message>
    <message>
        <source>Type</source>
        <comment>history.filter</comment>
        <translation>Type</translation>
    </message>
    <message>
        <source>All types</source>
        <comment>history.filter.all</comment>
        <translation>All types</translation>
    </message>
    <message>
        <source>Screenshot</source>
        <comment>history.filter.screenshot</comment>
        <translation>Screenshot</translation>
    </message>
    <message>
        <source>Annotation</source>
        <comment>history.filter.annotation</comment>
        <translation>Annotation</translation>
    </message>
    <message>
        <source>Recording</source>
        <comment>history.filter.recording</comment>
        <translation>Recording</translation>
    </message>
    <message>
        <source>AI</source>
        <comment>history.filter.ai</comment>
        <translation>AI</translation>
    </message>
    <message>
        <source>Sort</source>
        <comment>history.sort</comment>
        <translation>Sort</translation>
    </message>
    <message>
        <source>Newest</source>
        <comment>history.sort.newest</comment>
        <translation>Newest</translation>
    </message>
    <message>
        <source>Oldest</source>
        <comment>history.sort.oldest</comment>
        <translation>Oldest</translation>
    </message>
    <message>
        <source>Largest</source>
        <comment>history.sort.largest</comment>
        <translation>Largest</translation>
    </message>
    <message>
        <source>Refresh</source>
        <comment>history.btn.refresh</comment>
        <translation>Refresh</translation>
    </message>
    <message>
        <source>Grid view</source>
        <comment>history.view.grid</comment>
        <translation>Grid view</translation>
    </message>
    <message>
        <source>List view</source>
        <comment>history.view.list</comment>
        <translation>List view</translation>
    </message>
    <message>
        <source>%1 item(s) · %2</source>
        <comment>history.status.left</comment>
        <translation>%1 item(s) · %2</translation>
    </message>
    <message>
        <source>Selected 1 · %1</source>
        <comment>history.status.mid</comment>
        <translation>Selected 1 · %1</translation>
    </message>
    <message>
        <source>读取失败</source>
        <comment>history.gif.loadErrTitle</comment>
        <translation>Could not read</translation>
    </message>
    <message>
        <source>无法读取 GIF 图像帧，请检查文件是否存在。</source>
        <comment>history.gif.loadErrBody</comment>
        <translation>Could not read the GIF frames. Please check that the file exists.</translation>
    </message>
    <message>
        <source>Open with viewer</source>
        <comment>history.ctx.openViewer</comment>
        <translation>Open with viewer</translation>
    </message>
    <message>
        <source>✂️ 编辑 GIF...</source>
        <comment>history.ctx.editGif</comment>
        <translation>✂️ Edit GIF...</translation>
    </message>
    <message>
        <source>Re-edit</source>
        <comment>history.ctx.reedit</comment>
        <translation>Re-edit</translation>
    </message>
    <message>
        <source>Pin to screen</source>
        <comment>history.ctx.pin</comment>
        <translation>Pin to screen</translation>
    </message>
    <message>
        <source>Copy to clipboard</source>
        <comment>history.ctx.copyImage</comment>
        <translation>Copy to clipboard</translation>
    </message>
    <message>
        <source>Unfavorite</source>
        <comment>history.ctx.unfavorite</comment>
        <translation>Unfavorite</translation>
    </message>
    <message>
        <source>Favorite</source>
        <comment>history.ctx.favorite</comment>
        <translation>Favorite</translation>
    </message>
    <message>
        <source>Export...</source>
        <comment>history.ctx.export</comment>
        <translation>Export...</translation>
    </message>
    <message>
        <source>Locate original file</source>
        <comment>history.ctx.locate</comment>
        <translation>Locate original file</translation>
    </message>
    <message>
        <source>Modify tags...</source>
        <comment>history.ctx.modifyTags</comment>
        <translation>Modify tags...</translation>
    </message>
    <message>
        <source>Delete</source>
        <comment>history.ctx.delete</comment>
        <translation>Delete</translation>
    </message>
    <message>
        <source>Export</source>
        <comment>history.export.title</comment>
        <translation>Export</translation>
    </message>
    <message>
        <source>PNG image (*.png)</source>
        <comment>history.export.filter</comment>
        <translation>PNG image (*.png)</translation>
    </message>
    <message>
        <source>JPEG image (*.jpg *.jpeg)</source>
        <comment>history.export.filterJpeg</comment>
        <translation>JPEG image (*.jpg *.jpeg)</translation>
    </message>
    <message>
        <source>BMP image (*.bmp)</source>
        <comment>history.export.filterBmp</comment>
        <translation>BMP image (*.bmp)</translation>
    </message>
    <message>
        <source>Export</source>
        <comment>history.export.done.title</comment>
        <translation>Export</translation>
    </message>
    <message>
        <source>Saved to %1</source>
        <comment>history.export.done.body</comment>
        <translation>Saved to %1</translation>
    </message>
    <message>
        <source>Export failed</source>
        <comment>history.export.fail.title</comment>
        <translation>Export failed</translation>
    </message>
    <message>
        <source>Could not export the image.</source>
        <comment>history.export.fail.body</comment>
        <translation>Could not export the image.</translation>
    </message>
    <message>
        <source>Delete record</source>
        <comment>history.del.title</comment>
        <translation>Delete record</translation>
    </message>
    <message>
        <source>Delete this record? File on disk will be kept.</source>
        <comment>history.del.confirm</comment>
        <translation>Delete this record? File on disk will be kept.</translation>
    </message>
    <message>
        <source>Picture too large</source>
        <comment>history.tooLarge.title</comment>
        <translation>Picture too large</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::HistoryThumbnailView</name>
    <message>
        <source>History items</source>
        <comment>history.view</comment>
        <translation>History items</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::LicenseDialog</name>
    <message>
        <source>Open-source licenses</source>
        <comment>license.title</comment>
        <translation>Open-source licenses</translation>
    </message>
    <message>
        <source>Zelmor is built on these open-source components. Each is used under its own license, whose full text is named below.</source>
        <comment>license.intro</comment>
        <translation>Zelmor is built on these open-source components. Each is used under its own license, whose full text is named below.</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::MainWindow</name>
    <message>
        <source>Zelmor</source>
        <comment>main.title</comment>
        <translation>Zelmor</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::McpSettingsPage</name>
    <message>
        <source>MCP AI 客户端接入</source>
        <comment>settings.mcp.page.title</comment>
        <translation>MCP AI client access</translation>
    </message>
    <message>
        <source>支持通过 MCP 协议接入 AI 客户端。
接入后可直接调用 Zelmor 截图能力。
提供接入文档入口。</source>
        <comment>settings.mcp.page.desc</comment>
        <translation>Connect AI clients over the MCP protocol.
Once connected, they can use Zelmor&apos;s capture tools directly.
See the documentation for details.</translation>
    </message>
    <message>
        <source>MCP 服务路径配置</source>
        <comment>settings.mcp.path.title</comment>
        <translation>MCP server path</translation>
    </message>
    <message>
        <source>生产构建</source>
        <comment>settings.mcp.path.generate</comment>
        <translation>Copy configuration</translation>
    </message>
    <message>
        <source>生产构建</source>
        <comment>settings.mcp.build</comment>
        <translation>Configuration copied</translation>
    </message>
    <message>
        <source>MCP 配置已生成并复制到剪贴板！</source>
        <comment>settings.mcp.build.success</comment>
        <translation>The MCP configuration was generated and copied to the clipboard.</translation>
    </message>
    <message>
        <source>AI 客户端列表</source>
        <comment>settings.mcp.clients.title</comment>
        <translation>AI clients</translation>
    </message>
    <message>
        <source>➕ 添加自定义配置文件...</source>
        <comment>settings.mcp.add_custom</comment>
        <translation>➕ Add custom configuration file...</translation>
    </message>
    <message>
        <source>取消接入</source>
        <comment>settings.mcp.disconnect</comment>
        <translation>Disconnect</translation>
    </message>
    <message>
        <source>接入</source>
        <comment>settings.mcp.connect</comment>
        <translation>Connect</translation>
    </message>
    <message>
        <source>重新接入</source>
        <comment>settings.mcp.reconnect</comment>
        <translation>Reconnect</translation>
    </message>
    <message>
        <source>复制 JSON</source>
        <comment>settings.mcp.copy_json</comment>
        <translation>Copy JSON</translation>
    </message>
    <message>
        <source>删除此项</source>
        <comment>settings.mcp.delete_entry</comment>
        <translation>Remove</translation>
    </message>
    <message>
        <source>已接入</source>
        <comment>settings.mcp.status.connected</comment>
        <translation>Connected</translation>
    </message>
    <message>
        <source>未接入</source>
        <comment>settings.mcp.status.disconnected</comment>
        <translation>Not connected</translation>
    </message>
    <message>
        <source>接入成功</source>
        <comment>settings.mcp.inject.success</comment>
        <translation>Connected</translation>
    </message>
    <message>
        <source>已成功将 Zelmor MCP 注入到 %1。</source>
        <comment>settings.mcp.inject.body</comment>
        <translation>Zelmor MCP was added to %1.</translation>
    </message>
    <message>
        <source>接入失败</source>
        <comment>settings.mcp.inject.failed</comment>
        <translation>Connection failed</translation>
    </message>
    <message>
        <source>取消成功</source>
        <comment>settings.mcp.remove.success</comment>
        <translation>Disconnected</translation>
    </message>
    <message>
        <source>已从 %1 取消 Zelmor MCP 接入。</source>
        <comment>settings.mcp.remove.body</comment>
        <translation>Zelmor MCP was removed from %1.</translation>
    </message>
    <message>
        <source>取消失败</source>
        <comment>settings.mcp.remove.failed</comment>
        <translation>Disconnection failed</translation>
    </message>
    <message>
        <source>已复制</source>
        <comment>settings.mcp.copied</comment>
        <translation>Copied</translation>
    </message>
    <message>
        <source>JSON 配置已复制到剪贴板！</source>
        <comment>settings.mcp.copied.body</comment>
        <translation>The JSON configuration was copied to the clipboard.</translation>
    </message>
    <message>
        <source>选择 MCP 配置文件</source>
        <comment>settings.mcp.select_file</comment>
        <translation>Choose an MCP configuration file</translation>
    </message>
    <message>
        <source>JSON 配置文件 (*.json);;所有文件 (*.*)</source>
        <comment>settings.mcp.file_filter</comment>
        <translation>JSON configuration files (*.json);;All files (*)</translation>
    </message>
    <message>
        <source>添加成功</source>
        <comment>settings.mcp.custom_added</comment>
        <translation>Added</translation>
    </message>
    <message>
        <source>已添加自定义 MCP 配置文件路径。</source>
        <comment>settings.mcp.custom_added.body</comment>
        <translation>The custom MCP configuration file was added.</translation>
    </message>
    <message>
        <source>已删除</source>
        <comment>settings.mcp.deleted</comment>
        <translation>Removed</translation>
    </message>
    <message>
        <source>自定义 MCP 配置项已删除。</source>
        <comment>settings.mcp.deleted.body</comment>
        <translation>The custom MCP configuration entry was removed.</translation>
    </message>
    <message>
        <source>MCP server path</source>
        <comment>settings.mcp.path.name</comment>
        <translation>MCP server path</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::OcrResultDialog</name>
    <message>
        <source>文字识别结果 (OCR)</source>
        <comment>ocr.dialog.title</comment>
        <translation>Text recognition result (OCR)</translation>
    </message>
    <message>
        <source>Close</source>
        <comment>ocr.dialog.closeTip</comment>
        <translation>Close</translation>
    </message>
    <message>
        <source>📋 复制全部</source>
        <comment>ocr.dialog.copy</comment>
        <translation>📋 Copy all</translation>
    </message>
    <message>
        <source>已复制</source>
        <comment>ocr.copy.title</comment>
        <translation>Copied</translation>
    </message>
    <message>
        <source>文本已成功复制到剪贴板！</source>
        <comment>ocr.copy.body</comment>
        <translation>The text was copied to the clipboard.</translation>
    </message>
    <message>
        <source>📌 钉在屏幕</source>
        <comment>ocr.dialog.pin</comment>
        <translation>📌 Pin to screen</translation>
    </message>
    <message>
        <source>💬 移至 AI 聊天</source>
        <comment>ocr.dialog.chat</comment>
        <translation>💬 Move to AI chat</translation>
    </message>
    <message>
        <source>关闭</source>
        <comment>ocr.dialog.close</comment>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::PinWindow</name>
    <message>
        <source>Use &quot;Clear all pins&quot; in the tray menu to remove it.</source>
        <comment>pin.clickThrough.noHotkey</comment>
        <translation>Use &quot;Clear all pins&quot; in the tray menu to remove it.</translation>
    </message>
    <message>
        <source>Press %1 with the pointer over the pin to make it clickable again.</source>
        <comment>pin.clickThrough.body</comment>
        <translation>Press %1 with the pointer over the pin to make it clickable again.</translation>
    </message>
    <message>
        <source>Click-through on</source>
        <comment>pin.clickThrough.title</comment>
        <translation>Click-through on</translation>
    </message>
    <message>
        <source>Save pin</source>
        <comment>pin.save.title</comment>
        <translation>Save pin</translation>
    </message>
    <message>
        <source>PNG image (*.png)</source>
        <comment>pin.save.filter</comment>
        <translation>PNG image (*.png)</translation>
    </message>
    <message>
        <source>Copy</source>
        <comment>pin.menu.copy</comment>
        <translation>Copy</translation>
    </message>
    <message>
        <source>Save as...</source>
        <comment>pin.menu.saveAs</comment>
        <translation>Save as...</translation>
    </message>
    <message>
        <source>Click-through (F9)</source>
        <comment>pin.menu.clickThrough</comment>
        <translation>Click-through (F9)</translation>
    </message>
    <message>
        <source>Close</source>
        <comment>pin.menu.close</comment>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::RecordHud</name>
    <message>
        <source>Recording</source>
        <comment>record.hud.name</comment>
        <translation>Recording</translation>
    </message>
    <message>
        <source>Elapsed time</source>
        <comment>record.hud.elapsed</comment>
        <translation>Elapsed time</translation>
    </message>
    <message>
        <source>Pause</source>
        <comment>record.hud.pause</comment>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Stop</source>
        <comment>record.hud.stop</comment>
        <translation>Stop</translation>
    </message>
    <message>
        <source>Cancel</source>
        <comment>record.hud.cancel</comment>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Keys pressed</source>
        <comment>record.hud.keys</comment>
        <translation>Keys pressed</translation>
    </message>
    <message>
        <source>Recording time left</source>
        <comment>record.hud.timeLeftName</comment>
        <translation>Recording time left</translation>
    </message>
    <message>
        <source>%1 s left</source>
        <comment>record.hud.timeLeft</comment>
        <translation>%1 s left</translation>
    </message>
    <message>
        <source>Resume</source>
        <comment>record.hud.resume</comment>
        <translation>Resume</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::ScrollHud</name>
    <message>
        <source>Scroll capture</source>
        <comment>record.scroll.saved</comment>
        <translation>Scroll capture</translation>
    </message>
    <message>
        <source>Stitched 0 px</source>
        <comment>scroll.hud.height</comment>
        <translation>Stitched 0 px</translation>
    </message>
    <message>
        <source>Stitched height</source>
        <comment>scroll.hud.heightName</comment>
        <translation>Stitched height</translation>
    </message>
    <message>
        <source>Stop</source>
        <comment>scroll.hud.stop</comment>
        <translation>Stop</translation>
    </message>
    <message>
        <source>Cancel</source>
        <comment>scroll.hud.cancel</comment>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Stitched %1 px</source>
        <comment>scroll.hud.height.fmt</comment>
        <translation>Stitched %1 px</translation>
    </message>
    <message>
        <source>Saving…</source>
        <comment>scroll.hud.saving</comment>
        <translation>Saving…</translation>
    </message>
    <message>
        <source>scrolled too fast — scroll back a little</source>
        <comment>scroll.hud.tooFast</comment>
        <translation>scrolled too fast — scroll back a little</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::SessionItemWidget</name>
    <message>
        <source>删除对话</source>
        <comment>ai.session.delete</comment>
        <translation>Delete chat</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::SettingsDialog</name>
    <message>
        <source>Language:</source>
        <comment>settings.general.language</comment>
        <translation>Language:</translation>
    </message>
    <message>
        <source>🌐 官方网站</source>
        <comment>settings.about.website</comment>
        <translation>🌐 Website</translation>
    </message>
    <message>
        <source>General</source>
        <comment>settings.tab.general</comment>
        <translation>General</translation>
    </message>
    <message>
        <source>Hotkeys</source>
        <comment>settings.tab.hotkeys</comment>
        <translation>Hotkeys</translation>
    </message>
    <message>
        <source>Capture</source>
        <comment>settings.tab.capture</comment>
        <translation>Capture</translation>
    </message>
    <message>
        <source>Pin</source>
        <comment>settings.tab.pin</comment>
        <translation>Pin</translation>
    </message>
    <message>
        <source>AI</source>
        <comment>settings.tab.ai</comment>
        <translation>AI</translation>
    </message>
    <message>
        <source>MCP</source>
        <comment>settings.tab.mcp</comment>
        <translation>MCP</translation>
    </message>
    <message>
        <source>Privacy</source>
        <comment>settings.tab.privacy</comment>
        <translation>Privacy</translation>
    </message>
    <message>
        <source>About</source>
        <comment>settings.tab.about</comment>
        <translation>About</translation>
    </message>
    <message>
        <source>Settings</source>
        <comment>settings.title</comment>
        <translation>Settings</translation>
    </message>
    <message>
        <source>Settings sections</source>
        <comment>settings.nav</comment>
        <translation>Settings sections</translation>
    </message>
    <message>
        <source>Zelmor %1</source>
        <comment>settings.footer.version</comment>
        <translation>Zelmor %1</translation>
    </message>
    <message>
        <source>General</source>
        <comment>settings.general.page.title</comment>
        <translation>General</translation>
    </message>
    <message>
        <source>Appearance, language, and startup behavior.</source>
        <comment>settings.general.page.desc</comment>
        <translation>Appearance, language, and startup behavior.</translation>
    </message>
    <message>
        <source>Appearance</source>
        <comment>settings.general.appearance</comment>
        <translation>Appearance</translation>
    </message>
    <message>
        <source>Match Zelmor to your system or pick a theme.</source>
        <comment>settings.general.appearance.desc</comment>
        <translation>Match Zelmor to your system or pick a theme.</translation>
    </message>
    <message>
        <source>System</source>
        <comment>settings.general.theme.system</comment>
        <translation>System</translation>
    </message>
    <message>
        <source>Light</source>
        <comment>settings.general.theme.light</comment>
        <translation>Light</translation>
    </message>
    <message>
        <source>Dark</source>
        <comment>settings.general.theme.dark</comment>
        <translation>Dark</translation>
    </message>
    <message>
        <source>System default</source>
        <comment>settings.general.lang.system</comment>
        <translation>System default</translation>
    </message>
    <message>
        <source>Theme</source>
        <comment>settings.general.theme</comment>
        <translation>Theme</translation>
    </message>
    <message>
        <source>Language</source>
        <comment>settings.general.language</comment>
        <translation>Language</translation>
    </message>
    <message>
        <source>Startup</source>
        <comment>settings.general.startup</comment>
        <translation>Startup</translation>
    </message>
    <message>
        <source>Decide when Zelmor launches and what it shows.</source>
        <comment>settings.general.startup.desc</comment>
        <translation>Decide when Zelmor launches and what it shows.</translation>
    </message>
    <message>
        <source>Start with Windows</source>
        <comment>settings.general.autoStart</comment>
        <translation>Start with Windows</translation>
    </message>
    <message>
        <source>Launch Zelmor automatically when you sign in.</source>
        <comment>settings.general.autoStart.desc</comment>
        <translation>Launch Zelmor automatically when you sign in.</translation>
    </message>
    <message>
        <source>Start minimized to tray</source>
        <comment>settings.general.startMinimized</comment>
        <translation>Start minimized to tray</translation>
    </message>
    <message>
        <source>Open to the tray, no main window.</source>
        <comment>settings.general.startMinimized.desc</comment>
        <translation>Open to the tray, no main window.</translation>
    </message>
    <message>
        <source>Check for updates on startup</source>
        <comment>settings.general.checkUpdates</comment>
        <translation>Check for updates on startup</translation>
    </message>
    <message>
        <source>Ping the update server once when Zelmor starts.</source>
        <comment>settings.general.checkUpdates.desc</comment>
        <translation>Ping the update server once when Zelmor starts.</translation>
    </message>
    <message>
        <source>Run as administrator</source>
        <comment>settings.general.runAsAdmin</comment>
        <translation>Run as administrator</translation>
    </message>
    <message>
        <source>Hotkeys</source>
        <comment>settings.hotkeys.page.title</comment>
        <translation>Hotkeys</translation>
    </message>
    <message>
        <source>Global keyboard shortcuts. Edits apply immediately.</source>
        <comment>settings.hotkeys.page.desc</comment>
        <translation>Global keyboard shortcuts. Edits apply immediately.</translation>
    </message>
    <message>
        <source>Capture</source>
        <comment>settings.hotkeys.capture</comment>
        <translation>Capture</translation>
    </message>
    <message>
        <source>Take a screenshot of a region, screen, window, or after a delay.</source>
        <comment>settings.hotkeys.capture.desc</comment>
        <translation>Take a screenshot of a region, screen, window, or after a delay.</translation>
    </message>
    <message>
        <source>Region capture:</source>
        <comment>settings.hotkeys.region</comment>
        <translation>Region capture:</translation>
    </message>
    <message>
        <source>Fullscreen capture:</source>
        <comment>settings.hotkeys.fullscreen</comment>
        <translation>Fullscreen capture:</translation>
    </message>
    <message>
        <source>Window capture:</source>
        <comment>settings.hotkeys.window</comment>
        <translation>Window capture:</translation>
    </message>
    <message>
        <source>Delayed capture:</source>
        <comment>settings.hotkeys.delayed</comment>
        <translation>Delayed capture:</translation>
    </message>
    <message>
        <source>Tools &amp; Utility Shortcuts</source>
        <comment>settings.hotkeys.tools</comment>
        <translation>Tools &amp; Utility Shortcuts</translation>
    </message>
    <message>
        <source>Specialized capture modes, pin toggles, and shortcut utility panels.</source>
        <comment>settings.hotkeys.tools.desc</comment>
        <translation>Specialized capture modes, pin toggles, and shortcut utility panels.</translation>
    </message>
    <message>
        <source>GIF record:</source>
        <comment>settings.hotkeys.gif</comment>
        <translation>GIF record:</translation>
    </message>
    <message>
        <source>Scroll capture:</source>
        <comment>settings.hotkeys.scroll</comment>
        <translation>Scroll capture:</translation>
    </message>
    <message>
        <source>Pin click-through:</source>
        <comment>settings.hotkeys.pinClickThrough</comment>
        <translation>Pin click-through:</translation>
    </message>
    <message>
        <source>Pin from clipboard:</source>
        <comment>settings.hotkeys.pinFromClipboard</comment>
        <translation>Pin from clipboard:</translation>
    </message>
    <message>
        <source>History panel:</source>
        <comment>settings.hotkeys.history</comment>
        <translation>History panel:</translation>
    </message>
    <message>
        <source>Shortcut sheet:</source>
        <comment>settings.hotkeys.shortcutSheet</comment>
        <translation>Shortcut sheet:</translation>
    </message>
    <message>
        <source>Hotkeys take effect immediately after editing.</source>
        <comment>settings.hotkeys.hint</comment>
        <translation>Hotkeys take effect immediately after editing.</translation>
    </message>
    <message>
        <source>The desktop took these keys when Zelmor first offered them; change them later in the desktop&apos;s shortcut settings, under Zelmor.</source>
        <comment>settings.hotkeys.portalHint</comment>
        <translation>The desktop took these keys when Zelmor first offered them; change them later in the desktop&apos;s shortcut settings, under Zelmor.</translation>
    </message>
    <message>
        <source>Global keyboard shortcuts, bound by the desktop.</source>
        <comment>settings.hotkeys.page.descDesktop</comment>
        <translation>Global keyboard shortcuts, bound by the desktop.</translation>
    </message>
    <message>
        <source>Capture</source>
        <comment>settings.capture.page.title</comment>
        <translation>Capture</translation>
    </message>
    <message>
        <source>Output format, save location, and auto-behavior after a capture.</source>
        <comment>settings.capture.page.desc</comment>
        <translation>Output format, save location, and auto-behavior after a capture.</translation>
    </message>
    <message>
        <source>Format</source>
        <comment>settings.capture.format</comment>
        <translation>Format</translation>
    </message>
    <message>
        <source>Default image format. PNG for lossless, JPG for smaller files.</source>
        <comment>settings.capture.format.desc</comment>
        <translation>Default image format. PNG for lossless, JPG for smaller files.</translation>
    </message>
    <message>
        <source>Default format</source>
        <comment>settings.capture.defaultFormat</comment>
        <translation>Default format</translation>
    </message>
    <message>
        <source>JPG quality</source>
        <comment>settings.capture.jpgQuality</comment>
        <translation>JPG quality</translation>
    </message>
    <message>
        <source>Save</source>
        <comment>settings.capture.save</comment>
        <translation>Save</translation>
    </message>
    <message>
        <source>Where captured images are written and how files are named.</source>
        <comment>settings.capture.save.desc</comment>
        <translation>Where captured images are written and how files are named.</translation>
    </message>
    <message>
        <source>Output directory</source>
        <comment>settings.capture.outputDir</comment>
        <translation>Output directory</translation>
    </message>
    <message>
        <source>Browse…</source>
        <comment>settings.capture.browse</comment>
        <translation>Browse…</translation>
    </message>
    <message>
        <source>File name pattern</source>
        <comment>settings.capture.fileNaming</comment>
        <translation>File name pattern</translation>
    </message>
    <message>
        <source>Variables: {date}, {time}, {seq}, {w}, {h}.</source>
        <comment>settings.capture.fileNaming.hint</comment>
        <translation>Variables: {date}, {time}, {seq}, {w}, {h}.</translation>
    </message>
    <message>
        <source>Auto-copy to clipboard</source>
        <comment>settings.capture.autoCopy</comment>
        <translation>Auto-copy to clipboard</translation>
    </message>
    <message>
        <source>Auto-save file</source>
        <comment>settings.capture.autoSave</comment>
        <translation>Auto-save file</translation>
    </message>
    <message>
        <source>Hide pinned windows before capture</source>
        <comment>settings.capture.hidePins</comment>
        <translation>Hide pinned windows before capture</translation>
    </message>
    <message>
        <source>GIF</source>
        <comment>settings.capture.gif</comment>
        <translation>GIF</translation>
    </message>
    <message>
        <source>Defaults for GIF screen recordings.</source>
        <comment>settings.capture.gif.desc</comment>
        <translation>Defaults for GIF screen recordings.</translation>
    </message>
    <message>
        <source>GIF fps</source>
        <comment>settings.capture.gifFps</comment>
        <translation>GIF fps</translation>
    </message>
    <message>
        <source>GIF duration (s)</source>
        <comment>settings.capture.gifDuration</comment>
        <translation>GIF duration (s)</translation>
    </message>
    <message>
        <source>Pin</source>
        <comment>settings.pin.page.title</comment>
        <translation>Pin</translation>
    </message>
    <message>
        <source>Defaults for pinned screenshot windows.</source>
        <comment>settings.pin.page.desc</comment>
        <translation>Defaults for pinned screenshot windows.</translation>
    </message>
    <message>
        <source>Appearance</source>
        <comment>settings.pin.appearance</comment>
        <translation>Appearance</translation>
    </message>
    <message>
        <source>Default opacity and where new pins appear on screen.</source>
        <comment>settings.pin.appearance.desc</comment>
        <translation>Default opacity and where new pins appear on screen.</translation>
    </message>
    <message>
        <source>Default opacity</source>
        <comment>settings.pin.opacity</comment>
        <translation>Default opacity</translation>
    </message>
    <message>
        <source>Default position</source>
        <comment>settings.pin.position</comment>
        <translation>Default position</translation>
    </message>
    <message>
        <source>Screen center</source>
        <comment>settings.pin.position.center</comment>
        <translation>Screen center</translation>
    </message>
    <message>
        <source>Under cursor</source>
        <comment>settings.pin.position.cursor</comment>
        <translation>Under cursor</translation>
    </message>
    <message>
        <source>Zoom</source>
        <comment>settings.pin.zoom</comment>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>How far a pin can be zoomed in or out with the scroll wheel.</source>
        <comment>settings.pin.zoom.desc</comment>
        <translation>How far a pin can be zoomed in or out with the scroll wheel.</translation>
    </message>
    <message>
        <source>Min zoom (%)</source>
        <comment>settings.pin.minZoom</comment>
        <translation>Min zoom (%)</translation>
    </message>
    <message>
        <source>Max zoom (%)</source>
        <comment>settings.pin.maxZoom</comment>
        <translation>Max zoom (%)</translation>
    </message>
    <message>
        <source>Privacy</source>
        <comment>settings.privacy.page.title</comment>
        <translation>Privacy</translation>
    </message>
    <message>
        <source>Zelmor works fully offline. Confirm where your data lives and clear it on demand.</source>
        <comment>settings.privacy.page.desc</comment>
        <translation>Zelmor works fully offline. Confirm where your data lives and clear it on demand.</translation>
    </message>
    <message>
        <source>Data</source>
        <comment>settings.privacy.data</comment>
        <translation>Data</translation>
    </message>
    <message>
        <source>All captures and AI conversations stay on this machine. Nothing is uploaded.</source>
        <comment>settings.privacy.data.desc</comment>
        <translation>All captures and AI conversations stay on this machine. Nothing is uploaded.</translation>
    </message>
    <message>
        <source>Clear capture history</source>
        <comment>settings.privacy.clear</comment>
        <translation>Clear capture history</translation>
    </message>
    <message>
        <source>Open data folder</source>
        <comment>settings.privacy.openFolder</comment>
        <translation>Open data folder</translation>
    </message>
    <message>
        <source>Clear history</source>
        <comment>settings.privacy.clearTitle</comment>
        <translation>Clear history</translation>
    </message>
    <message>
        <source>Delete all history records? Files on disk are kept.</source>
        <comment>settings.privacy.clearConfirm</comment>
        <translation>Delete all history records? Files on disk are kept.</translation>
    </message>
    <message>
        <source>About</source>
        <comment>settings.about.page.title</comment>
        <translation>About</translation>
    </message>
    <message>
        <source>Version, updates, and open-source notices.</source>
        <comment>settings.about.page.desc</comment>
        <translation>Version, updates, and open-source notices.</translation>
    </message>
    <message>
        <source>Version %1</source>
        <comment>settings.about.version</comment>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>Open-source notice</source>
        <comment>settings.about.notice</comment>
        <translation>Open-source notice</translation>
    </message>
    <message>
        <source>Restart with elevated privileges so Zelmor can capture UAC prompts.</source>
        <comment>settings.general.runAsAdmin.desc</comment>
        <translation>Restart with elevated privileges so Zelmor can capture UAC prompts.</translation>
    </message>
    <message>
        <source>Not active: another program holds this combination, or the system does not allow it.</source>
        <comment>settings.hotkeys.refused</comment>
        <translation>Not active: another program holds this combination, or the system does not allow it.</translation>
    </message>
    <message>
        <source>Start with the session</source>
        <comment>settings.general.autoStart.session</comment>
        <translation>Start with the session</translation>
    </message>
    <message>
        <source>The autostart entry could not be changed.</source>
        <comment>settings.general.autoStart.failed</comment>
        <translation>The autostart entry could not be changed.</translation>
    </message>
    <message>
        <source>Zelmor cannot bind global keys on this desktop. In the desktop&apos;s keyboard settings, bind each command below to a key; the keys below are suggestions.</source>
        <comment>settings.hotkeys.desktop.commands</comment>
        <translation>Zelmor cannot bind global keys on this desktop. In the desktop&apos;s keyboard settings, bind each command below to a key; the keys below are suggestions.</translation>
    </message>
    <message>
        <source>Zelmor cannot bind global keys on this desktop. Add these lines to %1 and reload sway (Mod4+Shift+C). They follow the keys below.</source>
        <comment>settings.hotkeys.desktop.sway</comment>
        <translation>Zelmor cannot bind global keys on this desktop. Add these lines to %1 and reload sway (Mod4+Shift+C). They follow the keys below.</translation>
    </message>
    <message>
        <source>The desktop binds the keys</source>
        <comment>settings.hotkeys.desktop</comment>
        <translation>The desktop binds the keys</translation>
    </message>
    <message>
        <source>Commands to bind</source>
        <comment>settings.hotkeys.desktop.commandsName</comment>
        <translation>Commands to bind</translation>
    </message>
    <message>
        <source>Copy</source>
        <comment>settings.hotkeys.copy</comment>
        <translation>Copy</translation>
    </message>
    <message>
        <source>Copied</source>
        <comment>settings.hotkeys.copied</comment>
        <translation>Copied</translation>
    </message>
    <message>
        <source>The commands are on the clipboard.</source>
        <comment>settings.hotkeys.copied.body</comment>
        <translation>The commands are on the clipboard.</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::ShortcutSheetDialog</name>
    <message>
        <source>Capture region</source>
        <comment>shortcutSheet.row.region</comment>
        <translation>Capture region</translation>
    </message>
    <message>
        <source>Capture fullscreen</source>
        <comment>shortcutSheet.row.fullscreen</comment>
        <translation>Capture fullscreen</translation>
    </message>
    <message>
        <source>Capture window</source>
        <comment>shortcutSheet.row.window</comment>
        <translation>Capture window</translation>
    </message>
    <message>
        <source>Delayed capture</source>
        <comment>shortcutSheet.row.delayed</comment>
        <translation>Delayed capture</translation>
    </message>
    <message>
        <source>Record GIF</source>
        <comment>shortcutSheet.row.gif</comment>
        <translation>Record GIF</translation>
    </message>
    <message>
        <source>Scroll capture</source>
        <comment>shortcutSheet.row.scroll</comment>
        <translation>Scroll capture</translation>
    </message>
    <message>
        <source>Toggle pin click-through</source>
        <comment>shortcutSheet.row.pinClickThru</comment>
        <translation>Toggle pin click-through</translation>
    </message>
    <message>
        <source>Pin from clipboard</source>
        <comment>shortcutSheet.row.pinClip</comment>
        <translation>Pin from clipboard</translation>
    </message>
    <message>
        <source>Open history</source>
        <comment>shortcutSheet.row.history</comment>
        <translation>Open history</translation>
    </message>
    <message>
        <source>Shortcut cheat sheet</source>
        <comment>shortcutSheet.row.sheet</comment>
        <translation>Shortcut cheat sheet</translation>
    </message>
    <message>
        <source>Zelmor — Shortcut cheat sheet</source>
        <comment>shortcutSheet.title</comment>
        <translation>Zelmor — Shortcut cheat sheet</translation>
    </message>
    <message>
        <source>Current global hotkeys. Remap them in Settings → Hotkeys.</source>
        <comment>shortcutSheet.hint</comment>
        <translation>Current global hotkeys. Remap them in Settings → Hotkeys.</translation>
    </message>
    <message>
        <source>The keys Zelmor offers the desktop, which binds them; Settings → Hotkeys shows how.</source>
        <comment>shortcutSheet.hintDesktop</comment>
        <translation>The keys Zelmor offers the desktop, which binds them; Settings → Hotkeys shows how.</translation>
    </message>
    <message>
        <source>Action</source>
        <comment>shortcutSheet.col.action</comment>
        <translation>Action</translation>
    </message>
    <message>
        <source>Shortcut</source>
        <comment>shortcutSheet.col.shortcut</comment>
        <translation>Shortcut</translation>
    </message>
    <message>
        <source>Copy the selection</source>
        <comment>shortcutSheet.overlay.copy</comment>
        <translation>Copy the selection</translation>
    </message>
    <message>
        <source>Save the selection</source>
        <comment>shortcutSheet.overlay.save</comment>
        <translation>Save the selection</translation>
    </message>
    <message>
        <source>Undo</source>
        <comment>shortcutSheet.overlay.undo</comment>
        <translation>Undo</translation>
    </message>
    <message>
        <source>Redo</source>
        <comment>shortcutSheet.overlay.redo</comment>
        <translation>Redo</translation>
    </message>
    <message>
        <source>Cancel, or drop the mark being drawn</source>
        <comment>shortcutSheet.overlay.cancel</comment>
        <translation>Cancel, or drop the mark being drawn</translation>
    </message>
    <message>
        <source>Rectangle, ellipse, arrow, line</source>
        <comment>shortcutSheet.overlay.shapes</comment>
        <translation>Rectangle, ellipse, arrow, line</translation>
    </message>
    <message>
        <source>Brush, highlighter, mosaic</source>
        <comment>shortcutSheet.overlay.brushes</comment>
        <translation>Brush, highlighter, mosaic</translation>
    </message>
    <message>
        <source>Text, counter, stamp</source>
        <comment>shortcutSheet.overlay.texts</comment>
        <translation>Text, counter, stamp</translation>
    </message>
    <message>
        <source>Colour of the palette</source>
        <comment>shortcutSheet.overlay.palette</comment>
        <translation>Colour of the palette</translation>
    </message>
    <message>
        <source>Size of the last mark</source>
        <comment>shortcutSheet.overlay.size</comment>
        <translation>Size of the last mark</translation>
    </message>
    <message>
        <source>Copy the colour under the pointer</source>
        <comment>shortcutSheet.overlay.pickColour</comment>
        <translation>Copy the colour under the pointer</translation>
    </message>
    <message>
        <source>Colour as RGB or hex</source>
        <comment>shortcutSheet.overlay.colourFormat</comment>
        <translation>Colour as RGB or hex</translation>
    </message>
    <message>
        <source>Ctrl+Wheel</source>
        <comment>shortcutSheet.overlay.wheel</comment>
        <translation>Ctrl+Wheel</translation>
    </message>
    <message>
        <source>Global hotkeys</source>
        <comment>shortcutSheet.global.title</comment>
        <translation>Global hotkeys</translation>
    </message>
    <message>
        <source>In the capture overlay</source>
        <comment>shortcutSheet.overlay.title</comment>
        <translation>In the capture overlay</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::TaskItemRow</name>
    <message>
        <source>✅ 完成</source>
        <comment>task.finished</comment>
        <translation>✅ Done</translation>
    </message>
    <message>
        <source>❌ 失败</source>
        <comment>task.failed</comment>
        <translation>❌ Failed</translation>
    </message>
    <message>
        <source>已取消</source>
        <comment>task.cancelled</comment>
        <translation>Cancelled</translation>
    </message>
    <message>
        <source>⏳ 处理中</source>
        <comment>task.running</comment>
        <translation>⏳ Processing</translation>
    </message>
    <message>
        <source>取消</source>
        <comment>task.cancel</comment>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::TaskNotificationToast</name>
    <message>
        <source>⚡ AI 后台任务管理器</source>
        <comment>task.manager.title</comment>
        <translation>⚡ AI background tasks</translation>
    </message>
    <message>
        <source>Close</source>
        <comment>task.close</comment>
        <translation>Close</translation>
    </message>
    <message>
        <source>⚡ AI 后台任务 (%1 处理中)</source>
        <comment>task.header.active</comment>
        <translation>⚡ AI background tasks (%1 in progress)</translation>
    </message>
    <message>
        <source>⚡ AI 后台任务 (处理完成)</source>
        <comment>task.header.finished</comment>
        <translation>⚡ AI background tasks (all done)</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::overlay::OverlayPanels</name>
    <message>
        <source>Copy</source>
        <comment>overlay.btn.copy</comment>
        <translation>Copy</translation>
    </message>
    <message>
        <source>Pin</source>
        <comment>overlay.btn.pin</comment>
        <translation>Pin</translation>
    </message>
    <message>
        <source>Save</source>
        <comment>overlay.btn.save</comment>
        <translation>Save</translation>
    </message>
    <message>
        <source>Extract Text (OCR)</source>
        <comment>overlay.btn.ocr</comment>
        <translation>Extract Text (OCR)</translation>
    </message>
    <message>
        <source>Translate Image</source>
        <comment>overlay.btn.translate</comment>
        <translation>Translate Image</translation>
    </message>
    <message>
        <source>AI Auto Annotate UI</source>
        <comment>overlay.btn.aiAnnotate</comment>
        <translation>AI Auto Annotate UI</translation>
    </message>
    <message>
        <source>Undo</source>
        <comment>overlay.btn.undo</comment>
        <translation>Undo</translation>
    </message>
    <message>
        <source>Redo</source>
        <comment>overlay.btn.redo</comment>
        <translation>Redo</translation>
    </message>
    <message>
        <source>Reselect</source>
        <comment>overlay.btn.reselect</comment>
        <translation>Reselect</translation>
    </message>
    <message>
        <source>Cancel</source>
        <comment>overlay.btn.cancel</comment>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Start</source>
        <comment>overlay.btn.start</comment>
        <translation>Start</translation>
    </message>
    <message>
        <source>Scroll for me</source>
        <comment>overlay.btn.autoScroll</comment>
        <translation>Scroll for me</translation>
    </message>
    <message>
        <source>Select / Move</source>
        <comment>annotate.tool.select</comment>
        <translation>Select / Move</translation>
    </message>
    <message>
        <source>Rectangle</source>
        <comment>annotate.tool.rect</comment>
        <translation>Rectangle</translation>
    </message>
    <message>
        <source>Ellipse</source>
        <comment>annotate.tool.ellipse</comment>
        <translation>Ellipse</translation>
    </message>
    <message>
        <source>Arrow</source>
        <comment>annotate.tool.arrow</comment>
        <translation>Arrow</translation>
    </message>
    <message>
        <source>Line</source>
        <comment>annotate.tool.line</comment>
        <translation>Line</translation>
    </message>
    <message>
        <source>Brush</source>
        <comment>annotate.tool.brush</comment>
        <translation>Brush</translation>
    </message>
    <message>
        <source>Highlighter</source>
        <comment>annotate.tool.highlight</comment>
        <translation>Highlighter</translation>
    </message>
    <message>
        <source>Mosaic</source>
        <comment>annotate.tool.mosaic</comment>
        <translation>Mosaic</translation>
    </message>
    <message>
        <source>Blur</source>
        <comment>annotate.tool.blur</comment>
        <translation>Blur</translation>
    </message>
    <message>
        <source>Text</source>
        <comment>annotate.tool.text</comment>
        <translation>Text</translation>
    </message>
    <message>
        <source>Counter</source>
        <comment>annotate.tool.counter</comment>
        <translation>Counter</translation>
    </message>
    <message>
        <source>Stamp</source>
        <comment>annotate.tool.stamp</comment>
        <translation>Stamp</translation>
    </message>
    <message>
        <source>Manual</source>
        <comment>overlay.dur.manual</comment>
        <translation>Manual</translation>
    </message>
    <message>
        <source>5s</source>
        <comment>overlay.dur.5s</comment>
        <translation>5s</translation>
    </message>
    <message>
        <source>10s</source>
        <comment>overlay.dur.10s</comment>
        <translation>10s</translation>
    </message>
    <message>
        <source>15s</source>
        <comment>overlay.dur.15s</comment>
        <translation>15s</translation>
    </message>
    <message>
        <source>30s</source>
        <comment>overlay.dur.30s</comment>
        <translation>30s</translation>
    </message>
    <message>
        <source>1 min</source>
        <comment>overlay.dur.1m</comment>
        <translation>1 min</translation>
    </message>
    <message>
        <source>2 min</source>
        <comment>overlay.dur.2m</comment>
        <translation>2 min</translation>
    </message>
    <message>
        <source>5 min</source>
        <comment>overlay.dur.5m</comment>
        <translation>5 min</translation>
    </message>
    <message>
        <source>8 fps</source>
        <comment>overlay.fps.8</comment>
        <translation>8 fps</translation>
    </message>
    <message>
        <source>10 fps</source>
        <comment>overlay.fps.10</comment>
        <translation>10 fps</translation>
    </message>
    <message>
        <source>15 fps</source>
        <comment>overlay.fps.15</comment>
        <translation>15 fps</translation>
    </message>
    <message>
        <source>24 fps</source>
        <comment>overlay.fps.24</comment>
        <translation>24 fps</translation>
    </message>
    <message>
        <source>30 fps</source>
        <comment>overlay.fps.30</comment>
        <translation>30 fps</translation>
    </message>
    <message>
        <source>Recording duration</source>
        <comment>overlay.label.duration</comment>
        <translation>Recording duration</translation>
    </message>
    <message>
        <source>Frame rate</source>
        <comment>overlay.label.fps</comment>
        <translation>Frame rate</translation>
    </message>
    <message>
        <source>Pen width</source>
        <comment>annotate.label.width</comment>
        <translation>Pen width</translation>
    </message>
    <message>
        <source>Font size</source>
        <comment>annotate.label.font</comment>
        <translation>Font size</translation>
    </message>
    <message>
        <source>Red</source>
        <comment>overlay.colour.red</comment>
        <translation>Red</translation>
    </message>
    <message>
        <source>Yellow</source>
        <comment>overlay.colour.yellow</comment>
        <translation>Yellow</translation>
    </message>
    <message>
        <source>Green</source>
        <comment>overlay.colour.green</comment>
        <translation>Green</translation>
    </message>
    <message>
        <source>Blue</source>
        <comment>overlay.colour.blue</comment>
        <translation>Blue</translation>
    </message>
    <message>
        <source>Orange</source>
        <comment>overlay.colour.orange</comment>
        <translation>Orange</translation>
    </message>
    <message>
        <source>Pink</source>
        <comment>overlay.colour.pink</comment>
        <translation>Pink</translation>
    </message>
    <message>
        <source>Purple</source>
        <comment>overlay.colour.purple</comment>
        <translation>Purple</translation>
    </message>
    <message>
        <source>Black</source>
        <comment>overlay.colour.black</comment>
        <translation>Black</translation>
    </message>
    <message>
        <source>White</source>
        <comment>overlay.colour.white</comment>
        <translation>White</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::settings::UpdateSection</name>
    <message>
        <source>Check for updates</source>
        <comment>settings.about.checkUpdates</comment>
        <translation>Check for updates</translation>
    </message>
    <message>
        <source>Last checked: never</source>
        <comment>settings.about.lastChecked</comment>
        <translation>Last checked: never</translation>
    </message>
    <message>
        <source>You&apos;re on the latest version.</source>
        <comment>settings.about.upToDate</comment>
        <translation>You&apos;re on the latest version.</translation>
    </message>
    <message>
        <source>Check failed: %1</source>
        <comment>settings.about.checkFailed</comment>
        <translation>Check failed: %1</translation>
    </message>
    <message>
        <source>Saved to %1. Install the package from there, then restart Zelmor.</source>
        <comment>settings.about.downloaded</comment>
        <translation>Saved to %1. Install the package from there, then restart Zelmor.</translation>
    </message>
    <message>
        <source>Download failed: %1</source>
        <comment>settings.about.downloadFailed</comment>
        <translation>Download failed: %1</translation>
    </message>
    <message>
        <source>Checking…</source>
        <comment>settings.about.checking</comment>
        <translation>Checking…</translation>
    </message>
    <message>
        <source>Update available: %1</source>
        <comment>settings.about.available</comment>
        <translation>Update available: %1</translation>
    </message>
    <message>
        <source>Update available</source>
        <comment>settings.about.availableTitle</comment>
        <translation>Update available</translation>
    </message>
    <message>
        <source>Version %1 is available. Download it to your download folder now?

%2</source>
        <comment>settings.about.availableAsk</comment>
        <translation>Version %1 is available. Download it to your download folder now?

%2</translation>
    </message>
    <message>
        <source>Downloading…</source>
        <comment>settings.about.downloading</comment>
        <translation>Downloading…</translation>
    </message>
    <message>
        <source>Downloading… %1%</source>
        <comment>settings.about.downloadingPercent</comment>
        <translation>Downloading… %1%</translation>
    </message>
    <message>
        <source>Downloading… %1 MB</source>
        <comment>settings.about.downloadingMb</comment>
        <translation>Downloading… %1 MB</translation>
    </message>
    <message>
        <source>Version %1 is available. Download and install now?

%2</source>
        <comment>settings.about.availableAskInstall</comment>
        <translation>Version %1 is available. Download and install now?

%2</translation>
    </message>
    <message>
        <source>Installer launched: %1. Zelmor will now quit.</source>
        <comment>settings.about.installerLaunched</comment>
        <translation>Installer launched: %1. Zelmor will now quit.</translation>
    </message>
</context>
</TS>
