<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>QObject</name>
    <message>
        <source>Screenshot (%1 × %2 px)</source>
        <comment>ai.preview.title</comment>
        <translation>截图 (%1 × %2 像素)</translation>
    </message>
    <message>
        <source>点击关闭预览</source>
        <comment>ai.tip.closePreview</comment>
        <translation>点击关闭预览</translation>
    </message>
    <message>
        <source>Screenshot preview</source>
        <comment>ai.preview.image</comment>
        <translation>截图预览</translation>
    </message>
</context>
<context>
    <name>zelmor::manager::ActionManager</name>
    <message>
        <source>Open AI Settings</source>
        <comment>ai.notConfigured.open</comment>
        <translation>打开 AI 设置</translation>
    </message>
    <message>
        <source>Capture failed</source>
        <comment>capture.failed.title</comment>
        <translation>截图失败</translation>
    </message>
    <message>
        <source>OCR</source>
        <comment>tray.ocr</comment>
        <translation>文字识别 (OCR)</translation>
    </message>
    <message>
        <source>🔍 正在提取文字，请稍候...</source>
        <comment>ai.ocr.processing</comment>
        <translation>🔍 正在提取文字，请稍候...</translation>
    </message>
    <message>
        <source>文字识别 (OCR)</source>
        <comment>ai.ocr.title</comment>
        <translation>文字识别 (OCR)</translation>
    </message>
    <message>
        <source>正在提取文字...</source>
        <comment>ai.ocr.processing</comment>
        <translation>正在提取文字...</translation>
    </message>
    <message>
        <source>识别失败</source>
        <comment>ai.ocr.failed</comment>
        <translation>识别失败</translation>
    </message>
    <message>
        <source>提取成功</source>
        <comment>ai.ocr.success</comment>
        <translation>提取成功</translation>
    </message>
    <message>
        <source>Translation</source>
        <comment>tray.translate</comment>
        <translation>截图翻译</translation>
    </message>
    <message>
        <source>🌐 正在翻译图片内容，请稍候...</source>
        <comment>ai.translate.processing</comment>
        <translation>🌐 正在翻译图片内容，请稍候...</translation>
    </message>
    <message>
        <source>截图翻译</source>
        <comment>ai.translate.title</comment>
        <translation>截图翻译</translation>
    </message>
    <message>
        <source>正在翻译图片...</source>
        <comment>ai.translate.processing</comment>
        <translation>正在翻译图片...</translation>
    </message>
    <message>
        <source>翻译失败</source>
        <comment>ai.translate.failed</comment>
        <translation>翻译失败</translation>
    </message>
    <message>
        <source>翻译成功</source>
        <comment>ai.translate.success</comment>
        <translation>翻译成功</translation>
    </message>
    <message>
        <source>截图翻译结果</source>
        <comment>ai.translate.dialogTitle</comment>
        <translation>截图翻译结果</translation>
    </message>
    <message>
        <source>AI 自动标注</source>
        <comment>ai.annotate.processing.title</comment>
        <translation>AI 自动标注</translation>
    </message>
    <message>
        <source>✏️ AI 正在智能识别并标注 UI 控件，请稍候...</source>
        <comment>ai.annotate.processing.body</comment>
        <translation>✏️ AI 正在智能识别并标注 UI 控件，请稍候...</translation>
    </message>
    <message>
        <source>AI 自动标注</source>
        <comment>ai.annotate.title</comment>
        <translation>AI 自动标注</translation>
    </message>
    <message>
        <source>正在识别 UI 控件...</source>
        <comment>ai.annotate.processing</comment>
        <translation>正在识别 UI 控件...</translation>
    </message>
    <message>
        <source>标注失败</source>
        <comment>ai.annotate.failed</comment>
        <translation>标注失败</translation>
    </message>
    <message>
        <source>标注成功 (%1 个控件)</source>
        <comment>ai.annotate.success</comment>
        <translation>标注成功 (%1 个控件)</translation>
    </message>
    <message>
        <source>Annotation copied (%1x%2)</source>
        <translation>标注图已复制 (%1x%2)</translation>
    </message>
    <message>
        <source>Re-edit failed</source>
        <comment>capture.failed.title</comment>
        <translation>重新编辑失败</translation>
    </message>
    <message>
        <source>Image could not be loaded.</source>
        <translation>无法加载图片。</translation>
    </message>
    <message>
        <source>Region copied to clipboard (%1x%2)</source>
        <translation>区域截图已复制到剪贴板 (%1x%2)</translation>
    </message>
    <message>
        <source>No image</source>
        <comment>tray.clipboard.empty.title</comment>
        <translation>没有图片</translation>
    </message>
    <message>
        <source>Clipboard doesn&apos;t contain an image.</source>
        <translation>剪贴板中没有图片。</translation>
    </message>
    <message>
        <source>Copied</source>
        <comment>capture.copied.title</comment>
        <translation>已复制</translation>
    </message>
    <message>
        <source>Save failed</source>
        <comment>capture.savefail.title</comment>
        <translation>保存失败</translation>
    </message>
    <message>
        <source>Saved</source>
        <comment>capture.saved.title</comment>
        <translation>已保存</translation>
    </message>
    <message>
        <source>Captured</source>
        <comment>capture.captured.title</comment>
        <translation>截图完成</translation>
    </message>
    <message>
        <source>Captured %1x%2</source>
        <translation>已截图 %1x%2</translation>
    </message>
    <message>
        <source>No window</source>
        <comment>capture.window.empty.title</comment>
        <translation>没有窗口</translation>
    </message>
    <message>
        <source>Could not detect foreground window.</source>
        <translation>无法检测到前台窗口。</translation>
    </message>
    <message>
        <source>Drag over the window to capture</source>
        <comment>overlay.hint.window</comment>
        <translation>拖动框选要截取的窗口</translation>
    </message>
    <message>
        <source>Window captured: %1</source>
        <translation>已截取窗口：%1</translation>
    </message>
    <message>
        <source>Delayed capture</source>
        <comment>capture.delayed.title</comment>
        <translation>延时截图</translation>
    </message>
    <message>
        <source>Capturing in %1 seconds...</source>
        <translation>%1 秒后截图...</translation>
    </message>
    <message>
        <source>Delayed capture done (%1x%2)</source>
        <translation>延时截图完成 (%1x%2)</translation>
    </message>
    <message>
        <source>Elevation canceled</source>
        <comment>tray.elevation.canceled</comment>
        <translation>已取消提权</translation>
    </message>
    <message>
        <source>Running Zelmor as administrator is not supported on X11 desktops.</source>
        <translation>X11 桌面不支持以管理员身份运行 Zelmor。</translation>
    </message>
    <message>
        <source>AI not configured</source>
        <comment>ai.notConfigured.title</comment>
        <translation>AI 未配置</translation>
    </message>
    <message>
        <source>Please add or configure AI Provider and API Key in Settings → AI.</source>
        <comment>ai.notConfigured.body</comment>
        <translation>请在「设置 → AI」中添加或配置 AI 服务商和 API 密钥。</translation>
    </message>
    <message>
        <source>请帮我分析或总结以下提取的文字：</source>
        <comment>ai.ocr.chatPrompt</comment>
        <translation>请帮我分析或总结以下提取的文字：</translation>
    </message>
    <message>
        <source>GIF failed</source>
        <comment>record.gif.failed</comment>
        <translation>GIF 录制失败</translation>
    </message>
    <message>
        <source>Recording stopped</source>
        <comment>record.gif.memoryLimit.title</comment>
        <translation>录制已停止</translation>
    </message>
    <message>
        <source>The recording reached its memory limit of %1 MB and stopped. The frames so far are in the editor.</source>
        <comment>record.gif.memoryLimit.body</comment>
        <translation>录制已达到 %1 MB 的内存上限并停止。已录制的帧已在编辑器中打开。</translation>
    </message>
    <message>
        <source>Scroll capture</source>
        <comment>record.scroll.saved</comment>
        <translation>滚动截图</translation>
    </message>
    <message>
        <source>Stitched image saved (%1x%2)</source>
        <translation>拼接图已保存 (%1x%2)</translation>
    </message>
    <message>
        <source>Scroll failed</source>
        <comment>record.scroll.failed</comment>
        <translation>滚动截图失败</translation>
    </message>
    <message>
        <source>The stitched image reached its memory limit of %1 MB; what was stitched so far is saved.</source>
        <comment>record.scroll.memoryLimit.body</comment>
        <translation>拼接图已达到 %1 MB 的内存上限；已拼接的部分已保存。</translation>
    </message>
    <message>
        <source>The page jumped further than the region in one step, so the image ends there.</source>
        <comment>record.scroll.autoTooFast.body</comment>
        <translation>自动滚动时页面一步移动超过了选区的高度，拼接图到此为止。</translation>
    </message>
    <message>
        <source>Gestures on</source>
        <comment>tray.gesture.on</comment>
        <translation>鼠标手势已开启</translation>
    </message>
    <message>
        <source>Right-drag to gesture. (R=next pin, L=prev, D=history, DR=capture, DL=clear pins)</source>
        <comment>tray.gesture.on.body</comment>
        <translation>按住右键拖动即可使用手势。(R=下一个贴图, L=上一个, D=历史记录, DR=截图, DL=清除贴图)</translation>
    </message>
    <message>
        <source>Gestures unavailable</source>
        <comment>tray.gesture.unavailable</comment>
        <translation>鼠标手势不可用</translation>
    </message>
    <message>
        <source>This desktop lets no program watch the mouse, so gestures cannot work here.</source>
        <comment>tray.gesture.unavailable.body</comment>
        <translation>此桌面不允许任何程序观察鼠标，因此手势在这里无法使用。</translation>
    </message>
    <message>
        <source>Recorded without marks</source>
        <comment>record.unmarked.title</comment>
        <translation>录制中没有标记</translation>
    </message>
    <message>
        <source>This desktop lets no program see clicks and keys, so recordings show no click marks or key chips.</source>
        <comment>record.unmarked.body</comment>
        <translation>此桌面不允许任何程序看到点击和按键，因此录制内容不显示点击标记和按键提示。</translation>
    </message>
    <message>
        <source>Gestures off</source>
        <comment>tray.gesture.off</comment>
        <translation>鼠标手势已关闭</translation>
    </message>
    <message>
        <source>Mouse gestures disabled.</source>
        <comment>tray.gesture.off.body</comment>
        <translation>鼠标手势已停用。</translation>
    </message>
    <message>
        <source>Update available</source>
        <comment>tray.update.available</comment>
        <translation>有可用更新</translation>
    </message>
    <message>
        <source>Zelmor %1 is available.</source>
        <translation>Zelmor %1 已发布。</translation>
    </message>
    <message>
        <source>Up to date</source>
        <comment>tray.update.uptodate</comment>
        <translation>已是最新版本</translation>
    </message>
    <message>
        <source>You&apos;re on the latest version.</source>
        <translation>您使用的已是最新版本。</translation>
    </message>
    <message>
        <source>Update check failed</source>
        <comment>tray.update.failed</comment>
        <translation>检查更新失败</translation>
    </message>
    <message>
        <source>Restart as administrator was not granted.</source>
        <translation>未获准以管理员身份重新启动。</translation>
    </message>
    <message>
        <source>This desktop gives Zelmor single screenshots through its screenshot portal, not the stream of pictures that recording and scroll capture need. Record and scroll on sway or another wlroots desktop, or in an X11 session.</source>
        <comment>capture.failed.noScreenStream</comment>
        <translation>此桌面只通过其截图门户为 Zelmor 提供单张截图，而录制和滚动截图需要连续的画面。请在 sway 或其他 wlroots 桌面上，或在 X11 会话中录制和滚动截图。</translation>
    </message>
</context>
<context>
    <name>zelmor::manager::TaskManager</name>
    <message>
        <source>已取消</source>
        <translation>已取消</translation>
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
        <translation>✨ AI 助手与对话</translation>
    </message>
    <message>
        <source>📷 Send Screenshot to AI</source>
        <comment>tray.aiCapture</comment>
        <translation>📷 截图发送给 AI</translation>
    </message>
    <message>
        <source>🔤 Extract Text (OCR)</source>
        <comment>tray.ocr</comment>
        <translation>🔤 提取文字 (OCR)</translation>
    </message>
    <message>
        <source>✏️ AI Auto Annotate UI</source>
        <comment>tray.aiAnnotate</comment>
        <translation>✏️ AI 自动标注界面</translation>
    </message>
    <message>
        <source>Region capture</source>
        <comment>tray.captureRegion</comment>
        <translation>区域截图</translation>
    </message>
    <message>
        <source>Fullscreen capture</source>
        <comment>tray.captureFullscreen</comment>
        <translation>全屏截图</translation>
    </message>
    <message>
        <source>Window capture</source>
        <comment>tray.captureWindow</comment>
        <translation>窗口截图</translation>
    </message>
    <message>
        <source>Delayed capture</source>
        <comment>tray.captureDelayed</comment>
        <translation>延时截图</translation>
    </message>
    <message>
        <source>%1 s</source>
        <comment>tray.delayed.secs</comment>
        <translation>%1 秒</translation>
    </message>
    <message>
        <source>Record GIF</source>
        <comment>tray.recordGif</comment>
        <translation>录制 GIF</translation>
    </message>
    <message>
        <source>Scroll capture</source>
        <comment>tray.scrollCapture</comment>
        <translation>滚动截图</translation>
    </message>
    <message>
        <source>Annotate screen</source>
        <comment>tray.annotateScreen</comment>
        <translation>标注屏幕</translation>
    </message>
    <message>
        <source>From clipboard</source>
        <comment>tray.fromClipboard</comment>
        <translation>从剪贴板贴图</translation>
    </message>
    <message>
        <source>History</source>
        <comment>tray.history</comment>
        <translation>历史记录</translation>
    </message>
    <message>
        <source>Open output directory</source>
        <comment>tray.openOutputDir</comment>
        <translation>打开输出目录</translation>
    </message>
    <message>
        <source>Pin sessions</source>
        <comment>tray.pinSessions</comment>
        <translation>贴图管理</translation>
    </message>
    <message>
        <source>Hide all pins</source>
        <comment>tray.pinHideAll</comment>
        <translation>隐藏所有贴图</translation>
    </message>
    <message>
        <source>Restore all pins</source>
        <comment>tray.pinRestoreAll</comment>
        <translation>恢复所有贴图</translation>
    </message>
    <message>
        <source>Clear all pins</source>
        <comment>tray.pinClearAll</comment>
        <translation>清除所有贴图</translation>
    </message>
    <message>
        <source>Theme</source>
        <comment>tray.theme</comment>
        <translation>主题</translation>
    </message>
    <message>
        <source>Light</source>
        <comment>tray.theme.light</comment>
        <translation>浅色</translation>
    </message>
    <message>
        <source>Dark</source>
        <comment>tray.theme.dark</comment>
        <translation>深色</translation>
    </message>
    <message>
        <source>System</source>
        <comment>tray.theme.system</comment>
        <translation>跟随系统</translation>
    </message>
    <message>
        <source>Settings...</source>
        <comment>tray.settings</comment>
        <translation>设置...</translation>
    </message>
    <message>
        <source>About</source>
        <comment>tray.about</comment>
        <translation>关于</translation>
    </message>
    <message>
        <source>Shortcut cheat sheet</source>
        <comment>tray.shortcutSheet</comment>
        <translation>快捷键速查表</translation>
    </message>
    <message>
        <source>License...</source>
        <comment>tray.license</comment>
        <translation>许可证...</translation>
    </message>
    <message>
        <source>Restart as admin</source>
        <comment>tray.restartAdmin</comment>
        <translation>以管理员身份重启</translation>
    </message>
    <message>
        <source>Quit</source>
        <comment>tray.quit</comment>
        <translation>退出</translation>
    </message>
    <message>
        <source>Mouse gestures</source>
        <comment>tray.mouseGesture</comment>
        <translation>鼠标手势</translation>
    </message>
    <message>
        <source>Check for updates</source>
        <comment>tray.checkUpdates</comment>
        <translation>检查更新</translation>
    </message>
    <message>
        <source>%1 (%2 unavailable)</source>
        <comment>tray.hotkeyRefused</comment>
        <translation>%1（%2 不可用）</translation>
    </message>
</context>
<context>
    <name>zelmor::service::ai::AiApiService</name>
    <message>
        <source>AI Base URL is not configured. Please open Zelmor Settings -&gt; AI to set API Base URL &amp; Key.</source>
        <translation>未配置 AI 接口地址。请打开 Zelmor 的「设置 -&gt; AI」填写 API 接口地址和密钥。</translation>
    </message>
    <message>
        <source>Max tool execution depth (%1 steps) exceeded</source>
        <translation>已超过工具调用的最大深度 (%1 步)</translation>
    </message>
    <message>
        <source>Cancelled</source>
        <translation>已取消</translation>
    </message>
    <message>
        <source>Tesseract OCR (local) only recognises text. For translation, UI marking and chat, add a provider with a language model in Settings → AI and make it the default.</source>
        <translation>Tesseract OCR（本地）只能识别文字。如需翻译、界面标注和对话，请在 设置 → AI 中添加一个带语言模型的服务商，并设为默认。</translation>
    </message>
</context>
<context>
    <name>zelmor::service::capture::CaptureService</name>
    <message>
        <source>Zelmor runs through Xwayland here, which cannot see the Wayland desktop. Start Zelmor on Wayland itself (QT_QPA_PLATFORM=wayland).</source>
        <comment>capture.failed.xwayland</comment>
        <translation>Zelmor 正通过 Xwayland 运行，看不到 Wayland 桌面。请让 Zelmor 直接在 Wayland 上运行（QT_QPA_PLATFORM=wayland）。</translation>
    </message>
    <message>
        <source>Failed to grab screens.</source>
        <comment>capture.failed.body</comment>
        <translation>无法抓取屏幕画面。</translation>
    </message>
    <message>
        <source>This Wayland desktop lets Zelmor copy no screen: it offers no screen copy protocol (wlr-screencopy) and no screenshot portal. Use a wlroots desktop such as sway, or install xdg-desktop-portal with your desktop&apos;s portal backend.</source>
        <comment>capture.failed.noScreencopy</comment>
        <translation>此 Wayland 桌面不允许 Zelmor 复制屏幕：它既未提供屏幕复制协议（wlr-screencopy），也未提供截图门户。请使用 sway 等 wlroots 桌面，或安装 xdg-desktop-portal 及您桌面的门户后端。</translation>
    </message>
    <message>
        <source>The desktop&apos;s screenshot portal was refused or its dialog was closed. Capture again and allow Zelmor to take the screenshot.</source>
        <comment>capture.failed.portalRefused</comment>
        <translation>桌面的截图门户被拒绝，或其对话框已被关闭。请重新截图，并允许 Zelmor 截取屏幕。</translation>
    </message>
    <message>
        <source>The desktop&apos;s screenshot portal could not take a screenshot. Check that xdg-desktop-portal and your desktop&apos;s portal backend are installed.</source>
        <comment>capture.failed.portalFailed</comment>
        <translation>桌面的截图门户未能截取屏幕。请检查是否已安装 xdg-desktop-portal 及您桌面的门户后端。</translation>
    </message>
    <message>
        <source>The desktop&apos;s screenshot portal did not answer within 30 seconds; its dialog may have waited for you. Capture again and answer the dialog.</source>
        <comment>capture.failed.portalNoAnswer</comment>
        <translation>桌面的截图门户在 30 秒内没有应答，其对话框可能在等待您的操作。请重新截图并回应该对话框。</translation>
    </message>
</context>
<context>
    <name>zelmor::service::updater::UpdateService</name>
    <message>
        <source>The release feed did not answer in time.</source>
        <comment>updater.timeout</comment>
        <translation>发布源未能及时应答。</translation>
    </message>
    <message>
        <source>The release feed sent more than a release.</source>
        <comment>updater.tooLarge</comment>
        <translation>发布源返回的数据超出了版本信息应有的大小。</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::AiChatPanel</name>
    <message>
        <source>Show all (%1 characters)</source>
        <comment>ai.bubble.showAll</comment>
        <translation>显示全部（%1 个字符）</translation>
    </message>
    <message>
        <source>No AI provider for chat: set one up in Settings → AI</source>
        <comment>ai.provider.none</comment>
        <translation>没有可用于对话的 AI 服务：请在「设置 → AI」中添加</translation>
    </message>
    <message>
        <source>(No screenshot attached) Use 📷 Add Screenshot first, then ask AI</source>
        <comment>ai.attach.emptyHintNoKey</comment>
        <translation>(未附加截图) 先用「📷 添加截图」截图，再向 AI 提问</translation>
    </message>
    <message>
        <source>+ New Chat</source>
        <comment>ai.btn.newChat</comment>
        <translation>+ 新建对话</translation>
    </message>
    <message>
        <source>Search chat titles...</source>
        <comment>ai.search.placeholder</comment>
        <translation>搜索对话标题...</translation>
    </message>
    <message>
        <source>Chat sessions</source>
        <comment>ai.sessions.name</comment>
        <translation>对话列表</translation>
    </message>
    <message>
        <source>ℹ 当前是 OpenAI 模型 (Chat Completions 路径)，不会调用 Zelmor 的截图/历史/标注工具。如需工具能力，可：
  • 切到 Anthropic Claude 或 Qwen 模型；
  • 或在「设置 ⚙️ -&gt; AI」开启「OpenAI 走 Responses API」开关。</source>
        <comment>ai.warning.openai</comment>
        <translation>ℹ 当前是 OpenAI 模型 (Chat Completions 路径)，不会调用 Zelmor 的截图/历史/标注工具。如需工具能力，可：
  • 切到 Anthropic Claude 或 Qwen 模型；
  • 或在「设置 ⚙️ -&gt; AI」开启「OpenAI 走 Responses API」开关。</translation>
    </message>
    <message>
        <source>Ask AI about this screenshot</source>
        <comment>ai.topbar.title</comment>
        <translation>就这张截图询问 AI</translation>
    </message>
    <message>
        <source>Model</source>
        <comment>ai.model.name</comment>
        <translation>模型</translation>
    </message>
    <message>
        <source>📷 Add Screenshot</source>
        <comment>ai.btn.capture</comment>
        <translation>📷 添加截图</translation>
    </message>
    <message>
        <source>Capture screen region to current chat</source>
        <comment>ai.tip.capture</comment>
        <translation>截取屏幕区域并添加到当前对话</translation>
    </message>
    <message>
        <source>Search Chat</source>
        <comment>ai.btn.searchThisChat</comment>
        <translation>搜索对话</translation>
    </message>
    <message>
        <source>🗑️ Clear</source>
        <comment>ai.btn.clearChat</comment>
        <translation>🗑️ 清空</translation>
    </message>
    <message>
        <source>Clear current chat history</source>
        <comment>ai.tip.clear</comment>
        <translation>清空当前对话记录</translation>
    </message>
    <message>
        <source>AI settings</source>
        <comment>ai.tip.settings</comment>
        <translation>AI 设置</translation>
    </message>
    <message>
        <source>I can help you operate this computer</source>
        <comment>ai.welcome.title</comment>
        <translation>我可以帮你操作这台电脑</translation>
    </message>
    <message>
        <source>Annotate screenshot, recognize text, open apps, operate software windows — just say the word</source>
        <comment>ai.welcome.desc</comment>
        <translation>标注截图、识别文字、打开应用、操作软件窗口 —— 吩咐一声即可</translation>
    </message>
    <message>
        <source>Capture &amp; highlight key points</source>
        <comment>ai.card.annotate.desc</comment>
        <translation>截图并标出重点</translation>
    </message>
    <message>
        <source>Launch app or website</source>
        <comment>ai.card.openApp.desc</comment>
        <translation>启动应用或网站</translation>
    </message>
    <message>
        <source>Find contact &amp; send message</source>
        <comment>ai.card.operateUI.desc</comment>
        <translation>查找联系人并发送消息</translation>
    </message>
    <message>
        <source>Screen OCR</source>
        <comment>ai.card.ocr.desc</comment>
        <translation>屏幕文字识别</translation>
    </message>
    <message>
        <source>Screenshot translation</source>
        <comment>ai.card.translate.desc</comment>
        <translation>截图翻译</translation>
    </message>
    <message>
        <source>Extract key information</source>
        <comment>ai.card.summarize.desc</comment>
        <translation>提取关键信息</translation>
    </message>
    <message>
        <source>Annotate Screenshot</source>
        <comment>ai.card.annotate</comment>
        <translation>标注截图</translation>
    </message>
    <message>
        <source>Open Application</source>
        <comment>ai.card.openApp</comment>
        <translation>打开应用</translation>
    </message>
    <message>
        <source>Operate Software</source>
        <comment>ai.card.operateUI</comment>
        <translation>操作软件</translation>
    </message>
    <message>
        <source>Recognize Text</source>
        <comment>ai.card.ocr</comment>
        <translation>识别文字</translation>
    </message>
    <message>
        <source>Translate Content</source>
        <comment>ai.card.translate</comment>
        <translation>翻译内容</translation>
    </message>
    <message>
        <source>Summarize Points</source>
        <comment>ai.card.summarize</comment>
        <translation>总结要点</translation>
    </message>
    <message>
        <source>Screenshot processing</source>
        <comment>ai.wf.label</comment>
        <translation>截图处理</translation>
    </message>
    <message>
        <source>移除截图</source>
        <comment>ai.tip.removeAttach</comment>
        <translation>移除截图</translation>
    </message>
    <message>
        <source>输入消息...(Enter 发送，Shift+Enter 换行)</source>
        <comment>ai.input.placeholder</comment>
        <translation>输入消息...(Enter 发送，Shift+Enter 换行)</translation>
    </message>
    <message>
        <source>Message</source>
        <comment>ai.input.name</comment>
        <translation>消息</translation>
    </message>
    <message>
        <source>📷 Attachment Added</source>
        <comment>ai.toast.attachPastedTitle</comment>
        <translation>📷 已添加附件</translation>
    </message>
    <message>
        <source>Screenshot image pasted from clipboard</source>
        <comment>ai.toast.attachPastedBody</comment>
        <translation>已从剪贴板粘贴截图</translation>
    </message>
    <message>
        <source>Picture not attached</source>
        <comment>ai.toast.pictureRefusedTitle</comment>
        <translation>未附加图片</translation>
    </message>
    <message>
        <source>就绪</source>
        <comment>ai.status.ready</comment>
        <translation>就绪</translation>
    </message>
    <message>
        <source>Stop (Esc)</source>
        <comment>ai.btn.stopTip</comment>
        <translation>停止 (Esc)</translation>
    </message>
    <message>
        <source>发送消息 (Enter)</source>
        <comment>ai.btn.sendTip</comment>
        <translation>发送消息 (Enter)</translation>
    </message>
    <message>
        <source>本次请求将发送到 %1</source>
        <comment>ai.provider.info</comment>
        <translation>本次请求将发送到 %1</translation>
    </message>
    <message>
        <source>No Image</source>
        <comment>ai.attach.none</comment>
        <translation>无图片</translation>
    </message>
    <message>
        <source>(No screenshot attached) Press %1 to capture screenshot first, then ask AI</source>
        <comment>ai.attach.emptyHint</comment>
        <translation>(未附加截图) 先按 %1 截图，再向 AI 提问</translation>
    </message>
    <message>
        <source>点击放大预览截图</source>
        <comment>ai.tip.previewImage</comment>
        <translation>点击放大预览截图</translation>
    </message>
    <message>
        <source>Attached screenshot (%1 × %2 px)</source>
        <comment>ai.attach.info</comment>
        <translation>已附加截图 (%1 × %2 像素)</translation>
    </message>
    <message>
        <source>Image Chat</source>
        <comment>ai.session.imageChat</comment>
        <translation>图片对话</translation>
    </message>
    <message>
        <source>New Chat</source>
        <comment>ai.session.newTitle</comment>
        <translation>新对话</translation>
    </message>
    <message>
        <source>(Image Only)</source>
        <comment>ai.send.imageOnly</comment>
        <translation>(仅图片)</translation>
    </message>
    <message>
        <source>AI 正在思考回复中...</source>
        <comment>ai.btn.thinkingTip</comment>
        <translation>AI 正在思考回复中...</translation>
    </message>
    <message>
        <source>✨ AI 正在思考中...</source>
        <comment>ai.status.thinking</comment>
        <translation>✨ AI 正在思考中...</translation>
    </message>
    <message>
        <source>Zelmor AI</source>
        <comment>ai.role.ai</comment>
        <translation>Zelmor AI</translation>
    </message>
    <message>
        <source>AI 正在思考中 · · ·</source>
        <comment>ai.thinking.anim</comment>
        <translation>AI 正在思考中 · · ·</translation>
    </message>
    <message>
        <source>AI 正在思考中%1</source>
        <comment>ai.thinking.dots</comment>
        <translation>AI 正在思考中%1</translation>
    </message>
    <message>
        <source>已为您完成桌面自动化操作！</source>
        <comment>ai.mcp.completed</comment>
        <translation>已为您完成桌面自动化操作！</translation>
    </message>
    <message>
        <source>MCP 工具执行失败 (%1): %2</source>
        <comment>ai.mcp.failed</comment>
        <translation>MCP 工具执行失败 (%1): %2</translation>
    </message>
    <message>
        <source>✅ MCP 工具已成功执行: %1</source>
        <comment>ai.mcp.success</comment>
        <translation>✅ MCP 工具已成功执行: %1</translation>
    </message>
    <message>
        <source>⚠️ 自动化工具执行异常 [%1]: %2</source>
        <comment>ai.tool.err</comment>
        <translation>⚠️ 自动化工具执行异常 [%1]: %2</translation>
    </message>
    <message>
        <source>⚡ 已自动执行桌面操控: %1</source>
        <comment>ai.tool.succ</comment>
        <translation>⚡ 已自动执行桌面操控: %1</translation>
    </message>
    <message>
        <source>Request failed: %1</source>
        <comment>ai.error.fmt</comment>
        <translation>请求失败：%1</translation>
    </message>
    <message>
        <source>Help me open Notepad</source>
        <comment>ai.prompt.openApp</comment>
        <translation>帮我打开记事本</translation>
    </message>
    <message>
        <source>Please help me operate current software window:</source>
        <comment>ai.prompt.operateUi</comment>
        <translation>请帮我操作当前的软件窗口：</translation>
    </message>
    <message>
        <source>Please select screen region...</source>
        <comment>ai.status.capturing</comment>
        <translation>请选择屏幕区域...</translation>
    </message>
    <message>
        <source>Recognize text on current screen (OCR)</source>
        <comment>ai.prompt.ocr</comment>
        <translation>识别当前屏幕上的文字 (OCR)</translation>
    </message>
    <message>
        <source>Please analyze key areas and important information of this screenshot and provide annotations.</source>
        <comment>ai.prompt.annotate</comment>
        <translation>请分析这张截图的关键区域和重要信息，并给出标注。</translation>
    </message>
    <message>
        <source>Translate text content in current screenshot</source>
        <comment>ai.prompt.translate</comment>
        <translation>翻译当前截图中的文字内容</translation>
    </message>
    <message>
        <source>Summarize this screenshot in 3-5 key points</source>
        <comment>ai.prompt.explain</comment>
        <translation>用 3 到 5 个要点总结这张截图</translation>
    </message>
    <message>
        <source>You</source>
        <comment>ai.role.user</comment>
        <translation>你</translation>
    </message>
    <message>
        <source>System</source>
        <comment>ai.role.sys</comment>
        <translation>系统</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::AiProviderItemWidget</name>
    <message>
        <source>New Provider</source>
        <translation>新服务商</translation>
    </message>
    <message>
        <source>Default provider</source>
        <comment>settings.ai.list.default</comment>
        <translation>默认服务商</translation>
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
        <translation>为对话、文字识别、翻译和标注配置服务商。可添加一个或多个，然后选择默认服务商。</translation>
    </message>
    <message>
        <source>Providers</source>
        <comment>settings.ai.list.name</comment>
        <translation>服务商</translation>
    </message>
    <message>
        <source>Add</source>
        <comment>settings.ai.list.add</comment>
        <translation>添加</translation>
    </message>
    <message>
        <source>Remove</source>
        <comment>settings.ai.list.remove</comment>
        <translation>移除</translation>
    </message>
    <message>
        <source>Set default</source>
        <comment>settings.ai.list.setDefault</comment>
        <translation>设为默认</translation>
    </message>
    <message>
        <source>Share</source>
        <comment>settings.ai.list.share</comment>
        <translation>分享</translation>
    </message>
    <message>
        <source>Paste import</source>
        <comment>settings.ai.list.pasteImport</comment>
        <translation>粘贴导入</translation>
    </message>
    <message>
        <source>Name</source>
        <comment>settings.ai.form.name</comment>
        <translation>名称</translation>
    </message>
    <message>
        <source>Provider name</source>
        <translation>服务商名称</translation>
    </message>
    <message>
        <source>Preset</source>
        <comment>settings.ai.form.preset</comment>
        <translation>预设</translation>
    </message>
    <message>
        <source>Custom</source>
        <translation>自定义</translation>
    </message>
    <message>
        <source>Endpoint</source>
        <comment>settings.ai.form.endpoint</comment>
        <translation>接口地址</translation>
    </message>
    <message>
        <source>API key</source>
        <comment>settings.ai.form.apiKey</comment>
        <translation>API 密钥</translation>
    </message>
    <message>
        <source>Show</source>
        <comment>settings.ai.reveal</comment>
        <translation>显示</translation>
    </message>
    <message>
        <source>Test</source>
        <comment>settings.ai.form.test</comment>
        <translation>测试</translation>
    </message>
    <message>
        <source>Chat model</source>
        <comment>settings.ai.form.model</comment>
        <translation>对话模型</translation>
    </message>
    <message>
        <source>API keys are stored locally and never uploaded. Use Test to verify credentials before applying.</source>
        <translation>API 密钥仅保存在本机，不会上传。应用前可点击「测试」验证凭据。</translation>
    </message>
    <message>
        <source>Open AI chat...</source>
        <translation>打开 AI 对话...</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>应用</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>New Provider</source>
        <comment>settings.ai.list.newProvider</comment>
        <translation>新服务商</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>添加</translation>
    </message>
    <message>
        <source>Failed to add provider. The history database is not open.</source>
        <comment>settings.ai.list.add.failed</comment>
        <translation>添加服务商失败：历史记录数据库未打开。</translation>
    </message>
    <message>
        <source>Share</source>
        <translation>分享</translation>
    </message>
    <message>
        <source>Provider config copied to clipboard.</source>
        <comment>settings.ai.share.copied</comment>
        <translation>服务商配置已复制到剪贴板。</translation>
    </message>
    <message>
        <source>Paste import</source>
        <translation>粘贴导入</translation>
    </message>
    <message>
        <source>Clipboard is empty.</source>
        <comment>settings.ai.pasteImport.empty</comment>
        <translation>剪贴板为空。</translation>
    </message>
    <message>
        <source>Invalid JSON. Expected {name, protocol, baseUrl, apiKey, model}.</source>
        <comment>settings.ai.pasteImport.invalid</comment>
        <translation>JSON 无效。应包含 {name, protocol, baseUrl, apiKey, model}。</translation>
    </message>
    <message>
        <source>Hide</source>
        <comment>settings.ai.reveal.hide</comment>
        <translation>隐藏</translation>
    </message>
    <message>
        <source>Test</source>
        <translation>测试</translation>
    </message>
    <message>
        <source>API key is empty.</source>
        <comment>settings.ai.test.noKey</comment>
        <translation>API 密钥为空。</translation>
    </message>
    <message>
        <source>Testing...</source>
        <comment>settings.ai.form.testing</comment>
        <translation>正在测试...</translation>
    </message>
    <message>
        <source>Test Succeeded</source>
        <comment>settings.ai.test.success</comment>
        <translation>测试成功</translation>
    </message>
    <message>
        <source>Test Failed</source>
        <comment>settings.ai.test.failed</comment>
        <translation>测试失败</translation>
    </message>
    <message>
        <source>AI test failed</source>
        <comment>settings.ai.test.title.failed</comment>
        <translation>AI 测试失败</translation>
    </message>
    <message>
        <source>Recognition languages joined by +, such as eng+chi_sim</source>
        <comment>settings.ai.form.ocrLanguages</comment>
        <translation>识别语言，用 + 连接，例如 eng+chi_sim</translation>
    </message>
    <message>
        <source>AI test succeeded</source>
        <comment>settings.ai.test.title.succeeded</comment>
        <translation>AI 测试成功</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::CaptureOverlay</name>
    <message>
        <source>Drag a region to record</source>
        <comment>overlay.hint.gif</comment>
        <translation>拖动选择要录制的区域</translation>
    </message>
    <message>
        <source>Drag a region for scrolling capture</source>
        <comment>overlay.hint.scroll</comment>
        <translation>拖动选择滚动截图的区域</translation>
    </message>
    <message>
        <source>Drag a region to capture</source>
        <comment>overlay.hint.region</comment>
        <translation>拖动选择截图区域</translation>
    </message>
    <message>
        <source>Zelmor capture</source>
        <comment>overlay.title</comment>
        <translation>Zelmor 截图</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::ChatTextViewer</name>
    <message>
        <source>Close</source>
        <comment>ai.viewer.close</comment>
        <translation>关闭</translation>
    </message>
    <message>
        <source>Copy all</source>
        <comment>ai.viewer.copy</comment>
        <translation>全部复制</translation>
    </message>
    <message>
        <source>Whole message</source>
        <comment>ai.viewer.title</comment>
        <translation>完整消息</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::GifEditorDialog</name>
    <message>
        <source>GIF Frame Editor</source>
        <comment>gif.editor.title</comment>
        <translation>GIF 帧编辑器</translation>
    </message>
    <message>
        <source>(Paused - Space: Play/Pause | Left/Right: Step | Delete: Remove | Ctrl+Z: Restore)</source>
        <comment>gif.editor.tip</comment>
        <translation>(已暂停 - 空格：播放/暂停 | 左/右：逐帧 | Delete：删除 | Ctrl+Z：恢复)</translation>
    </message>
    <message>
        <source>关闭</source>
        <comment>gif.editor.close</comment>
        <translation>关闭</translation>
    </message>
    <message>
        <source>预览</source>
        <comment>gif.editor.preview</comment>
        <translation>预览</translation>
    </message>
    <message>
        <source>⏮ 上一帧</source>
        <comment>gif.editor.prevFrame</comment>
        <translation>⏮ 上一帧</translation>
    </message>
    <message>
        <source>▶ 播放</source>
        <comment>gif.editor.play</comment>
        <translation>▶ 播放</translation>
    </message>
    <message>
        <source>下一帧 ⏭</source>
        <comment>gif.editor.nextFrame</comment>
        <translation>下一帧 ⏭</translation>
    </message>
    <message>
        <source>帧位置</source>
        <comment>gif.editor.position</comment>
        <translation>帧位置</translation>
    </message>
    <message>
        <source>帧缩略图</source>
        <comment>gif.editor.thumbnails</comment>
        <translation>帧缩略图</translation>
    </message>
    <message>
        <source>🗑️ 删除选中帧</source>
        <comment>gif.editor.delSel</comment>
        <translation>🗑️ 删除选中帧</translation>
    </message>
    <message>
        <source>✂️ 仅保留框选帧</source>
        <comment>gif.editor.keepSel</comment>
        <translation>✂️ 仅保留框选帧</translation>
    </message>
    <message>
        <source>⏮ 删首帧</source>
        <comment>gif.editor.delFirst</comment>
        <translation>⏮ 删首帧</translation>
    </message>
    <message>
        <source>⏭ 删尾帧</source>
        <comment>gif.editor.delLast</comment>
        <translation>⏭ 删尾帧</translation>
    </message>
    <message>
        <source>↺ 还原所有帧</source>
        <comment>gif.editor.restore</comment>
        <translation>↺ 还原所有帧</translation>
    </message>
    <message>
        <source>帧率 FPS:</source>
        <comment>gif.editor.fps</comment>
        <translation>帧率 FPS:</translation>
    </message>
    <message>
        <source>取消</source>
        <comment>common.cancel</comment>
        <translation>取消</translation>
    </message>
    <message>
        <source>💾 另存为...</source>
        <comment>gif.editor.saveAs</comment>
        <translation>💾 另存为...</translation>
    </message>
    <message>
        <source>💾 导出保存</source>
        <comment>gif.editor.export</comment>
        <translation>💾 导出保存</translation>
    </message>
    <message>
        <source>另存为 GIF</source>
        <comment>gif.editor.saveAsTitle</comment>
        <translation>另存为 GIF</translation>
    </message>
    <message>
        <source>GIF Animation (*.gif)</source>
        <comment>gif.editor.filter</comment>
        <translation>GIF 动画 (*.gif)</translation>
    </message>
    <message>
        <source>导出错误</source>
        <comment>gif.editor.errTitle</comment>
        <translation>导出错误</translation>
    </message>
    <message>
        <source>无法导出包含 0 帧的空 GIF。</source>
        <comment>gif.editor.errBody</comment>
        <translation>无法导出包含 0 帧的空 GIF。</translation>
    </message>
    <message>
        <source>⏳ 正在后台合成 GIF...</source>
        <comment>gif.editor.exporting</comment>
        <translation>⏳ 正在后台合成 GIF...</translation>
    </message>
    <message>
        <source>⏳ 正在后台极速合成编码高清晰 GIF，请稍候...</source>
        <comment>gif.editor.exportingText</comment>
        <translation>⏳ 正在后台极速合成编码高清晰 GIF，请稍候...</translation>
    </message>
    <message>
        <source>Frame %1 of %2</source>
        <comment>gif.editor.exportProgress</comment>
        <translation>第 %1 / %2 帧</translation>
    </message>
    <message>
        <source>GIF 编码合成失败，请重试。</source>
        <comment>gif.editor.errBody</comment>
        <translation>GIF 编码合成失败，请重试。</translation>
    </message>
    <message>
        <source>GIF 导出成功</source>
        <comment>record.gif.saved</comment>
        <translation>GIF 导出成功</translation>
    </message>
    <message>
        <source>已合成导出高清晰 GIF 并自动记入历史记录:
%1</source>
        <comment>record.gif.savedBody</comment>
        <translation>已合成导出高清晰 GIF 并自动记入历史记录:
%1</translation>
    </message>
    <message>
        <source>暂无剩余帧</source>
        <comment>gif.editor.empty</comment>
        <translation>暂无剩余帧</translation>
    </message>
    <message>
        <source>第 %1 / %2 帧</source>
        <comment>gif.editor.frameCount</comment>
        <translation>第 %1 / %2 帧</translation>
    </message>
    <message>
        <source>Discard recording?</source>
        <comment>gif.editor.discardTitle</comment>
        <translation>放弃录制？</translation>
    </message>
    <message>
        <source>This recording of %1 s has not been saved. Discard it?</source>
        <comment>gif.editor.discardBody</comment>
        <translation>这段 %1 秒的录制尚未保存。要放弃它吗？</translation>
    </message>
    <message>
        <source>⏸ 暂停</source>
        <comment>gif.editor.pause</comment>
        <translation>⏸ 暂停</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::HistoryDetailPanel</name>
    <message>
        <source>Details</source>
        <comment>history.detail.title</comment>
        <translation>详细信息</translation>
    </message>
    <message>
        <source>Preview</source>
        <comment>history.detail.preview</comment>
        <translation>预览</translation>
    </message>
    <message>
        <source>File name</source>
        <comment>history.detail.k.file</comment>
        <translation>文件名</translation>
    </message>
    <message>
        <source>Dimensions</source>
        <comment>history.detail.k.size</comment>
        <translation>尺寸</translation>
    </message>
    <message>
        <source>Size</source>
        <comment>history.detail.k.bytes</comment>
        <translation>大小</translation>
    </message>
    <message>
        <source>Created</source>
        <comment>history.detail.k.created</comment>
        <translation>创建时间</translation>
    </message>
    <message>
        <source>SHA-256</source>
        <comment>history.detail.k.sha</comment>
        <translation>SHA-256</translation>
    </message>
    <message>
        <source>Tags</source>
        <comment>history.detail.tagsLabel</comment>
        <translation>标签</translation>
    </message>
    <message>
        <source>Separate multiple tags with commas...</source>
        <comment>history.detail.tagsPlaceholder</comment>
        <translation>多个标签用逗号分隔...</translation>
    </message>
    <message>
        <source>OCR</source>
        <comment>history.detail.ocrLabel</comment>
        <translation>文字识别 (OCR)</translation>
    </message>
    <message>
        <source>(none) — run OCR on the preview to fill</source>
        <comment>history.detail.ocrPlaceholder</comment>
        <translation>(无) —— 对预览进行文字识别即可填入</translation>
    </message>
    <message>
        <source>Copy to clipboard</source>
        <comment>history.detail.copy</comment>
        <translation>复制到剪贴板</translation>
    </message>
    <message>
        <source>Favorite</source>
        <comment>history.detail.favorite</comment>
        <translation>收藏</translation>
    </message>
    <message>
        <source>Export</source>
        <comment>history.detail.export</comment>
        <translation>导出</translation>
    </message>
    <message>
        <source>Locate</source>
        <comment>history.detail.locate</comment>
        <translation>定位文件</translation>
    </message>
    <message>
        <source>Delete</source>
        <comment>history.detail.delete</comment>
        <translation>删除</translation>
    </message>
    <message>
        <source>(no image)</source>
        <comment>history.detail.noImage</comment>
        <translation>(无图片)</translation>
    </message>
    <message>
        <source>%1×%2 px is too large to open with the memory of this computer.</source>
        <comment>history.tooLarge</comment>
        <translation>%1×%2 像素的图片太大，本机内存无法打开。</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::HistoryPanel</name>
    <message>
        <source>Search</source>
        <comment>history.search</comment>
        <translation>搜索</translation>
    </message>
    <message>
        <source>Search file name, tags or OCR text...</source>
        <comment>history.searchPlaceholder</comment>
        <translation>搜索文件名、标签或识别出的文字...</translation>
    </message>
    <message>
        <source>All</source>
        <comment>history.tab.all</comment>
        <translation>全部</translation>
    </message>
    <message>
        <source>Today</source>
        <comment>history.tab.today</comment>
        <translation>今天</translation>
    </message>
    <message>
        <source>This week</source>
        <comment>history.tab.week</comment>
        <translation>本周</translation>
    </message>
    <message>
        <source>Favorites</source>
        <comment>history.tab.favorites</comment>
        <translation>收藏</translation>
    </message>
    <message>
        <source>Type</source>
        <comment>history.filter</comment>
        <translation>类型</translation>
    </message>
    <message>
        <source>All types</source>
        <comment>history.filter.all</comment>
        <translation>全部类型</translation>
    </message>
    <message>
        <source>Screenshot</source>
        <comment>history.filter.screenshot</comment>
        <translation>截图</translation>
    </message>
    <message>
        <source>Annotation</source>
        <comment>history.filter.annotation</comment>
        <translation>标注</translation>
    </message>
    <message>
        <source>Recording</source>
        <comment>history.filter.recording</comment>
        <translation>录制</translation>
    </message>
    <message>
        <source>AI</source>
        <comment>history.filter.ai</comment>
        <translation>AI</translation>
    </message>
    <message>
        <source>Sort</source>
        <comment>history.sort</comment>
        <translation>排序</translation>
    </message>
    <message>
        <source>Newest</source>
        <comment>history.sort.newest</comment>
        <translation>最新</translation>
    </message>
    <message>
        <source>Oldest</source>
        <comment>history.sort.oldest</comment>
        <translation>最早</translation>
    </message>
    <message>
        <source>Largest</source>
        <comment>history.sort.largest</comment>
        <translation>最大</translation>
    </message>
    <message>
        <source>Refresh</source>
        <comment>history.btn.refresh</comment>
        <translation>刷新</translation>
    </message>
    <message>
        <source>Grid view</source>
        <comment>history.view.grid</comment>
        <translation>网格视图</translation>
    </message>
    <message>
        <source>List view</source>
        <comment>history.view.list</comment>
        <translation>列表视图</translation>
    </message>
    <message>
        <source>%1 item(s) · %2</source>
        <comment>history.status.left</comment>
        <translation>%1 项 · %2</translation>
    </message>
    <message>
        <source>Selected 1 · %1</source>
        <comment>history.status.mid</comment>
        <translation>已选 1 项 · %1</translation>
    </message>
    <message>
        <source>读取失败</source>
        <comment>history.gif.loadErrTitle</comment>
        <translation>读取失败</translation>
    </message>
    <message>
        <source>无法读取 GIF 图像帧，请检查文件是否存在。</source>
        <comment>history.gif.loadErrBody</comment>
        <translation>无法读取 GIF 图像帧，请检查文件是否存在。</translation>
    </message>
    <message>
        <source>Open with viewer</source>
        <comment>history.ctx.openViewer</comment>
        <translation>用查看器打开</translation>
    </message>
    <message>
        <source>✂️ 编辑 GIF...</source>
        <comment>history.ctx.editGif</comment>
        <translation>✂️ 编辑 GIF...</translation>
    </message>
    <message>
        <source>Re-edit</source>
        <comment>history.ctx.reedit</comment>
        <translation>重新编辑</translation>
    </message>
    <message>
        <source>Pin to screen</source>
        <comment>history.ctx.pin</comment>
        <translation>贴图到屏幕</translation>
    </message>
    <message>
        <source>Copy to clipboard</source>
        <comment>history.ctx.copyImage</comment>
        <translation>复制到剪贴板</translation>
    </message>
    <message>
        <source>Unfavorite</source>
        <comment>history.ctx.unfavorite</comment>
        <translation>取消收藏</translation>
    </message>
    <message>
        <source>Favorite</source>
        <comment>history.ctx.favorite</comment>
        <translation>收藏</translation>
    </message>
    <message>
        <source>Export...</source>
        <comment>history.ctx.export</comment>
        <translation>导出...</translation>
    </message>
    <message>
        <source>Locate original file</source>
        <comment>history.ctx.locate</comment>
        <translation>定位原文件</translation>
    </message>
    <message>
        <source>Modify tags...</source>
        <comment>history.ctx.modifyTags</comment>
        <translation>修改标签...</translation>
    </message>
    <message>
        <source>Delete</source>
        <comment>history.ctx.delete</comment>
        <translation>删除</translation>
    </message>
    <message>
        <source>Export</source>
        <comment>history.export.title</comment>
        <translation>导出</translation>
    </message>
    <message>
        <source>PNG image (*.png)</source>
        <comment>history.export.filter</comment>
        <translation>PNG 图片 (*.png)</translation>
    </message>
    <message>
        <source>JPEG image (*.jpg *.jpeg)</source>
        <comment>history.export.filterJpeg</comment>
        <translation>JPEG 图片 (*.jpg *.jpeg)</translation>
    </message>
    <message>
        <source>BMP image (*.bmp)</source>
        <comment>history.export.filterBmp</comment>
        <translation>BMP 图片 (*.bmp)</translation>
    </message>
    <message>
        <source>Export</source>
        <comment>history.export.done.title</comment>
        <translation>导出</translation>
    </message>
    <message>
        <source>Saved to %1</source>
        <comment>history.export.done.body</comment>
        <translation>已保存到 %1</translation>
    </message>
    <message>
        <source>Export failed</source>
        <comment>history.export.fail.title</comment>
        <translation>导出失败</translation>
    </message>
    <message>
        <source>Could not export the image.</source>
        <comment>history.export.fail.body</comment>
        <translation>无法导出图片。</translation>
    </message>
    <message>
        <source>Delete record</source>
        <comment>history.del.title</comment>
        <translation>删除记录</translation>
    </message>
    <message>
        <source>Delete this record? File on disk will be kept.</source>
        <comment>history.del.confirm</comment>
        <translation>删除这条记录？磁盘上的文件会保留。</translation>
    </message>
    <message>
        <source>Picture too large</source>
        <comment>history.tooLarge.title</comment>
        <translation>图片过大</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::HistoryThumbnailView</name>
    <message>
        <source>History items</source>
        <comment>history.view</comment>
        <translation>历史记录项</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::LicenseDialog</name>
    <message>
        <source>Open-source licenses</source>
        <comment>license.title</comment>
        <translation>开源许可证</translation>
    </message>
    <message>
        <source>Zelmor is built on these open-source components. Each is used under its own license, whose full text is named below.</source>
        <comment>license.intro</comment>
        <translation>Zelmor 基于以下开源组件构建。每个组件均按其自身的许可证使用，许可证全文见下方注明。</translation>
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
        <source>已接入</source>
        <comment>settings.mcp.status.connected</comment>
        <translation>已接入</translation>
    </message>
    <message>
        <source>未接入</source>
        <comment>settings.mcp.status.disconnected</comment>
        <translation>未接入</translation>
    </message>
    <message>
        <source>重新接入</source>
        <comment>settings.mcp.reconnect</comment>
        <translation>重新接入</translation>
    </message>
    <message>
        <source>接入</source>
        <comment>settings.mcp.connect</comment>
        <translation>接入</translation>
    </message>
    <message>
        <source>MCP AI 客户端接入</source>
        <comment>settings.mcp.page.title</comment>
        <translation>MCP AI 客户端接入</translation>
    </message>
    <message>
        <source>支持通过 MCP 协议接入 AI 客户端。
接入后可直接调用 Zelmor 截图能力。
提供接入文档入口。</source>
        <comment>settings.mcp.page.desc</comment>
        <translation>支持通过 MCP 协议接入 AI 客户端。
接入后可直接调用 Zelmor 截图能力。
提供接入文档入口。</translation>
    </message>
    <message>
        <source>MCP 服务路径配置</source>
        <comment>settings.mcp.path.title</comment>
        <translation>MCP 服务路径配置</translation>
    </message>
    <message>
        <source>MCP server path</source>
        <comment>settings.mcp.path.name</comment>
        <translation>MCP 服务路径</translation>
    </message>
    <message>
        <source>生产构建</source>
        <comment>settings.mcp.path.generate</comment>
        <translation>生产构建</translation>
    </message>
    <message>
        <source>生产构建</source>
        <comment>settings.mcp.build</comment>
        <translation>生产构建</translation>
    </message>
    <message>
        <source>MCP 配置已生成并复制到剪贴板！</source>
        <comment>settings.mcp.build.success</comment>
        <translation>MCP 配置已生成并复制到剪贴板！</translation>
    </message>
    <message>
        <source>AI 客户端列表</source>
        <comment>settings.mcp.clients.title</comment>
        <translation>AI 客户端列表</translation>
    </message>
    <message>
        <source>➕ 添加自定义配置文件...</source>
        <comment>settings.mcp.add_custom</comment>
        <translation>➕ 添加自定义配置文件...</translation>
    </message>
    <message>
        <source>取消接入</source>
        <comment>settings.mcp.disconnect</comment>
        <translation>取消接入</translation>
    </message>
    <message>
        <source>复制 JSON</source>
        <comment>settings.mcp.copy_json</comment>
        <translation>复制 JSON</translation>
    </message>
    <message>
        <source>接入失败</source>
        <comment>settings.mcp.inject.failed</comment>
        <translation>接入失败</translation>
    </message>
    <message>
        <source>接入成功</source>
        <comment>settings.mcp.inject.success</comment>
        <translation>接入成功</translation>
    </message>
    <message>
        <source>已成功将 Zelmor MCP 注入到 %1。</source>
        <comment>settings.mcp.inject.body</comment>
        <translation>已成功将 Zelmor MCP 注入到 %1。</translation>
    </message>
    <message>
        <source>取消失败</source>
        <comment>settings.mcp.remove.failed</comment>
        <translation>取消失败</translation>
    </message>
    <message>
        <source>取消成功</source>
        <comment>settings.mcp.remove.success</comment>
        <translation>取消成功</translation>
    </message>
    <message>
        <source>已从 %1 取消 Zelmor MCP 接入。</source>
        <comment>settings.mcp.remove.body</comment>
        <translation>已从 %1 取消 Zelmor MCP 接入。</translation>
    </message>
    <message>
        <source>已复制</source>
        <comment>settings.mcp.copied</comment>
        <translation>已复制</translation>
    </message>
    <message>
        <source>JSON 配置已复制到剪贴板！</source>
        <comment>settings.mcp.copied.body</comment>
        <translation>JSON 配置已复制到剪贴板！</translation>
    </message>
    <message>
        <source>删除此项</source>
        <comment>settings.mcp.delete_entry</comment>
        <translation>删除此项</translation>
    </message>
    <message>
        <source>已删除</source>
        <comment>settings.mcp.deleted</comment>
        <translation>已删除</translation>
    </message>
    <message>
        <source>自定义 MCP 配置项已删除。</source>
        <comment>settings.mcp.deleted.body</comment>
        <translation>自定义 MCP 配置项已删除。</translation>
    </message>
    <message>
        <source>选择 MCP 配置文件</source>
        <comment>settings.mcp.select_file</comment>
        <translation>选择 MCP 配置文件</translation>
    </message>
    <message>
        <source>JSON 配置文件 (*.json);;所有文件 (*.*)</source>
        <comment>settings.mcp.file_filter</comment>
        <translation>JSON 配置文件 (*.json);;所有文件 (*.*)</translation>
    </message>
    <message>
        <source>添加成功</source>
        <comment>settings.mcp.custom_added</comment>
        <translation>添加成功</translation>
    </message>
    <message>
        <source>已添加自定义 MCP 配置文件路径。</source>
        <comment>settings.mcp.custom_added.body</comment>
        <translation>已添加自定义 MCP 配置文件路径。</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::OcrResultDialog</name>
    <message>
        <source>文字识别结果 (OCR)</source>
        <comment>ocr.dialog.title</comment>
        <translation>文字识别结果 (OCR)</translation>
    </message>
    <message>
        <source>Close</source>
        <comment>ocr.dialog.closeTip</comment>
        <translation>关闭</translation>
    </message>
    <message>
        <source>📋 复制全部</source>
        <comment>ocr.dialog.copy</comment>
        <translation>📋 复制全部</translation>
    </message>
    <message>
        <source>已复制</source>
        <comment>ocr.copy.title</comment>
        <translation>已复制</translation>
    </message>
    <message>
        <source>文本已成功复制到剪贴板！</source>
        <comment>ocr.copy.body</comment>
        <translation>文本已成功复制到剪贴板！</translation>
    </message>
    <message>
        <source>📌 钉在屏幕</source>
        <comment>ocr.dialog.pin</comment>
        <translation>📌 钉在屏幕</translation>
    </message>
    <message>
        <source>💬 移至 AI 聊天</source>
        <comment>ocr.dialog.chat</comment>
        <translation>💬 移至 AI 聊天</translation>
    </message>
    <message>
        <source>关闭</source>
        <comment>ocr.dialog.close</comment>
        <translation>关闭</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::PinWindow</name>
    <message>
        <source>Use &quot;Clear all pins&quot; in the tray menu to remove it.</source>
        <comment>pin.clickThrough.noHotkey</comment>
        <translation>可在托盘菜单中用「清除所有贴图」将其移除。</translation>
    </message>
    <message>
        <source>Press %1 with the pointer over the pin to make it clickable again.</source>
        <comment>pin.clickThrough.body</comment>
        <translation>将鼠标指针移到贴图上并按 %1，即可恢复点击。</translation>
    </message>
    <message>
        <source>Click-through on</source>
        <comment>pin.clickThrough.title</comment>
        <translation>已开启鼠标穿透</translation>
    </message>
    <message>
        <source>Save pin</source>
        <comment>pin.save.title</comment>
        <translation>保存贴图</translation>
    </message>
    <message>
        <source>PNG image (*.png)</source>
        <comment>pin.save.filter</comment>
        <translation>PNG 图片 (*.png)</translation>
    </message>
    <message>
        <source>Copy</source>
        <comment>pin.menu.copy</comment>
        <translation>复制</translation>
    </message>
    <message>
        <source>Save as...</source>
        <comment>pin.menu.saveAs</comment>
        <translation>另存为...</translation>
    </message>
    <message>
        <source>Click-through (F9)</source>
        <comment>pin.menu.clickThrough</comment>
        <translation>鼠标穿透 (F9)</translation>
    </message>
    <message>
        <source>Close</source>
        <comment>pin.menu.close</comment>
        <translation>关闭</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::RecordHud</name>
    <message>
        <source>Recording</source>
        <comment>record.hud.name</comment>
        <translation>正在录制</translation>
    </message>
    <message>
        <source>Elapsed time</source>
        <comment>record.hud.elapsed</comment>
        <translation>已录制时长</translation>
    </message>
    <message>
        <source>Pause</source>
        <comment>record.hud.pause</comment>
        <translation>暂停</translation>
    </message>
    <message>
        <source>Stop</source>
        <comment>record.hud.stop</comment>
        <translation>停止</translation>
    </message>
    <message>
        <source>Cancel</source>
        <comment>record.hud.cancel</comment>
        <translation>取消</translation>
    </message>
    <message>
        <source>Keys pressed</source>
        <comment>record.hud.keys</comment>
        <translation>按下的按键</translation>
    </message>
    <message>
        <source>Recording time left</source>
        <comment>record.hud.timeLeftName</comment>
        <translation>剩余录制时间</translation>
    </message>
    <message>
        <source>%1 s left</source>
        <comment>record.hud.timeLeft</comment>
        <translation>剩余 %1 秒</translation>
    </message>
    <message>
        <source>Resume</source>
        <comment>record.hud.resume</comment>
        <translation>继续</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::ScrollHud</name>
    <message>
        <source>Scroll capture</source>
        <comment>record.scroll.saved</comment>
        <translation>滚动截图</translation>
    </message>
    <message>
        <source>Stitched 0 px</source>
        <comment>scroll.hud.height</comment>
        <translation>已拼接 0 像素</translation>
    </message>
    <message>
        <source>Stitched height</source>
        <comment>scroll.hud.heightName</comment>
        <translation>已拼接高度</translation>
    </message>
    <message>
        <source>Stop</source>
        <comment>scroll.hud.stop</comment>
        <translation>停止</translation>
    </message>
    <message>
        <source>Cancel</source>
        <comment>scroll.hud.cancel</comment>
        <translation>取消</translation>
    </message>
    <message>
        <source>Stitched %1 px</source>
        <comment>scroll.hud.height.fmt</comment>
        <translation>已拼接 %1 像素</translation>
    </message>
    <message>
        <source>Saving…</source>
        <comment>scroll.hud.saving</comment>
        <translation>正在保存…</translation>
    </message>
    <message>
        <source>scrolled too fast — scroll back a little</source>
        <comment>scroll.hud.tooFast</comment>
        <translation>滚动太快——请往回滚一点</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::SessionItemWidget</name>
    <message>
        <source>删除对话</source>
        <comment>ai.session.delete</comment>
        <translation>删除对话</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::SettingsDialog</name>
    <message>
        <source>Language:</source>
        <comment>settings.general.language</comment>
        <translation>语言：</translation>
    </message>
    <message>
        <source>General</source>
        <comment>settings.tab.general</comment>
        <translation>常规</translation>
    </message>
    <message>
        <source>Hotkeys</source>
        <comment>settings.tab.hotkeys</comment>
        <translation>快捷键</translation>
    </message>
    <message>
        <source>Capture</source>
        <comment>settings.tab.capture</comment>
        <translation>截图</translation>
    </message>
    <message>
        <source>Pin</source>
        <comment>settings.tab.pin</comment>
        <translation>贴图</translation>
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
        <translation>隐私</translation>
    </message>
    <message>
        <source>About</source>
        <comment>settings.tab.about</comment>
        <translation>关于</translation>
    </message>
    <message>
        <source>Settings</source>
        <comment>settings.title</comment>
        <translation>设置</translation>
    </message>
    <message>
        <source>Settings sections</source>
        <comment>settings.nav</comment>
        <translation>设置分类</translation>
    </message>
    <message>
        <source>Zelmor %1</source>
        <comment>settings.footer.version</comment>
        <translation>Zelmor %1</translation>
    </message>
    <message>
        <source>General</source>
        <comment>settings.general.page.title</comment>
        <translation>常规</translation>
    </message>
    <message>
        <source>Appearance, language, and startup behavior.</source>
        <comment>settings.general.page.desc</comment>
        <translation>外观、语言和启动行为。</translation>
    </message>
    <message>
        <source>Appearance</source>
        <comment>settings.general.appearance</comment>
        <translation>外观</translation>
    </message>
    <message>
        <source>Match Zelmor to your system or pick a theme.</source>
        <comment>settings.general.appearance.desc</comment>
        <translation>让 Zelmor 跟随系统，或选择一个主题。</translation>
    </message>
    <message>
        <source>System</source>
        <comment>settings.general.theme.system</comment>
        <translation>跟随系统</translation>
    </message>
    <message>
        <source>Light</source>
        <comment>settings.general.theme.light</comment>
        <translation>浅色</translation>
    </message>
    <message>
        <source>Dark</source>
        <comment>settings.general.theme.dark</comment>
        <translation>深色</translation>
    </message>
    <message>
        <source>System default</source>
        <comment>settings.general.lang.system</comment>
        <translation>系统默认</translation>
    </message>
    <message>
        <source>Theme</source>
        <comment>settings.general.theme</comment>
        <translation>主题</translation>
    </message>
    <message>
        <source>Language</source>
        <comment>settings.general.language</comment>
        <translation>语言</translation>
    </message>
    <message>
        <source>Startup</source>
        <comment>settings.general.startup</comment>
        <translation>启动</translation>
    </message>
    <message>
        <source>Decide when Zelmor launches and what it shows.</source>
        <comment>settings.general.startup.desc</comment>
        <translation>决定 Zelmor 何时启动以及启动后显示什么。</translation>
    </message>
    <message>
        <source>Start with Windows</source>
        <comment>settings.general.autoStart</comment>
        <translation>开机自动启动</translation>
    </message>
    <message>
        <source>Launch Zelmor automatically when you sign in.</source>
        <comment>settings.general.autoStart.desc</comment>
        <translation>登录时自动启动 Zelmor。</translation>
    </message>
    <message>
        <source>Start minimized to tray</source>
        <comment>settings.general.startMinimized</comment>
        <translation>启动时最小化到托盘</translation>
    </message>
    <message>
        <source>Open to the tray, no main window.</source>
        <comment>settings.general.startMinimized.desc</comment>
        <translation>只在托盘中启动，不显示主窗口。</translation>
    </message>
    <message>
        <source>Check for updates on startup</source>
        <comment>settings.general.checkUpdates</comment>
        <translation>启动时检查更新</translation>
    </message>
    <message>
        <source>Ping the update server once when Zelmor starts.</source>
        <comment>settings.general.checkUpdates.desc</comment>
        <translation>Zelmor 启动时向更新服务器查询一次。</translation>
    </message>
    <message>
        <source>Run as administrator</source>
        <comment>settings.general.runAsAdmin</comment>
        <translation>以管理员身份运行</translation>
    </message>
    <message>
        <source>Hotkeys</source>
        <comment>settings.hotkeys.page.title</comment>
        <translation>快捷键</translation>
    </message>
    <message>
        <source>Global keyboard shortcuts. Edits apply immediately.</source>
        <comment>settings.hotkeys.page.desc</comment>
        <translation>全局键盘快捷键。修改后立即生效。</translation>
    </message>
    <message>
        <source>Capture</source>
        <comment>settings.hotkeys.capture</comment>
        <translation>截图</translation>
    </message>
    <message>
        <source>Take a screenshot of a region, screen, window, or after a delay.</source>
        <comment>settings.hotkeys.capture.desc</comment>
        <translation>截取区域、整个屏幕、窗口，或延时截图。</translation>
    </message>
    <message>
        <source>Region capture:</source>
        <comment>settings.hotkeys.region</comment>
        <translation>区域截图：</translation>
    </message>
    <message>
        <source>Fullscreen capture:</source>
        <comment>settings.hotkeys.fullscreen</comment>
        <translation>全屏截图：</translation>
    </message>
    <message>
        <source>Window capture:</source>
        <comment>settings.hotkeys.window</comment>
        <translation>窗口截图：</translation>
    </message>
    <message>
        <source>Delayed capture:</source>
        <comment>settings.hotkeys.delayed</comment>
        <translation>延时截图：</translation>
    </message>
    <message>
        <source>Tools &amp; Utility Shortcuts</source>
        <comment>settings.hotkeys.tools</comment>
        <translation>工具与实用快捷键</translation>
    </message>
    <message>
        <source>Specialized capture modes, pin toggles, and shortcut utility panels.</source>
        <comment>settings.hotkeys.tools.desc</comment>
        <translation>特殊截图模式、贴图开关和快捷工具面板。</translation>
    </message>
    <message>
        <source>GIF record:</source>
        <comment>settings.hotkeys.gif</comment>
        <translation>录制 GIF：</translation>
    </message>
    <message>
        <source>Scroll capture:</source>
        <comment>settings.hotkeys.scroll</comment>
        <translation>滚动截图：</translation>
    </message>
    <message>
        <source>Pin click-through:</source>
        <comment>settings.hotkeys.pinClickThrough</comment>
        <translation>贴图鼠标穿透：</translation>
    </message>
    <message>
        <source>Pin from clipboard:</source>
        <comment>settings.hotkeys.pinFromClipboard</comment>
        <translation>从剪贴板贴图：</translation>
    </message>
    <message>
        <source>History panel:</source>
        <comment>settings.hotkeys.history</comment>
        <translation>历史记录面板：</translation>
    </message>
    <message>
        <source>Shortcut sheet:</source>
        <comment>settings.hotkeys.shortcutSheet</comment>
        <translation>快捷键速查表：</translation>
    </message>
    <message>
        <source>Hotkeys take effect immediately after editing.</source>
        <comment>settings.hotkeys.hint</comment>
        <translation>快捷键修改后立即生效。</translation>
    </message>
    <message>
        <source>The desktop took these keys when Zelmor first offered them; change them later in the desktop&apos;s shortcut settings, under Zelmor.</source>
        <comment>settings.hotkeys.portalHint</comment>
        <translation>桌面已在 Zelmor 首次提供这些快捷键时接管它们；以后请在桌面的快捷键设置中（Zelmor 分组下）修改。</translation>
    </message>
    <message>
        <source>Global keyboard shortcuts, bound by the desktop.</source>
        <comment>settings.hotkeys.page.descDesktop</comment>
        <translation>全局快捷键，由桌面绑定。</translation>
    </message>
    <message>
        <source>Capture</source>
        <comment>settings.capture.page.title</comment>
        <translation>截图</translation>
    </message>
    <message>
        <source>Output format, save location, and auto-behavior after a capture.</source>
        <comment>settings.capture.page.desc</comment>
        <translation>输出格式、保存位置以及截图后的自动操作。</translation>
    </message>
    <message>
        <source>Format</source>
        <comment>settings.capture.format</comment>
        <translation>格式</translation>
    </message>
    <message>
        <source>Default image format. PNG for lossless, JPG for smaller files.</source>
        <comment>settings.capture.format.desc</comment>
        <translation>默认图片格式。PNG 为无损，JPG 文件更小。</translation>
    </message>
    <message>
        <source>Default format</source>
        <comment>settings.capture.defaultFormat</comment>
        <translation>默认格式</translation>
    </message>
    <message>
        <source>JPG quality</source>
        <comment>settings.capture.jpgQuality</comment>
        <translation>JPG 质量</translation>
    </message>
    <message>
        <source>Save</source>
        <comment>settings.capture.save</comment>
        <translation>保存</translation>
    </message>
    <message>
        <source>Where captured images are written and how files are named.</source>
        <comment>settings.capture.save.desc</comment>
        <translation>截图保存的位置以及文件的命名方式。</translation>
    </message>
    <message>
        <source>Output directory</source>
        <comment>settings.capture.outputDir</comment>
        <translation>输出目录</translation>
    </message>
    <message>
        <source>Browse…</source>
        <comment>settings.capture.browse</comment>
        <translation>浏览…</translation>
    </message>
    <message>
        <source>File name pattern</source>
        <comment>settings.capture.fileNaming</comment>
        <translation>文件名格式</translation>
    </message>
    <message>
        <source>Variables: {date}, {time}, {seq}, {w}, {h}.</source>
        <comment>settings.capture.fileNaming.hint</comment>
        <translation>可用变量：{date}、{time}、{seq}、{w}、{h}。</translation>
    </message>
    <message>
        <source>Auto-copy to clipboard</source>
        <comment>settings.capture.autoCopy</comment>
        <translation>自动复制到剪贴板</translation>
    </message>
    <message>
        <source>Auto-save file</source>
        <comment>settings.capture.autoSave</comment>
        <translation>自动保存文件</translation>
    </message>
    <message>
        <source>Hide pinned windows before capture</source>
        <comment>settings.capture.hidePins</comment>
        <translation>截图前隐藏贴图窗口</translation>
    </message>
    <message>
        <source>GIF</source>
        <comment>settings.capture.gif</comment>
        <translation>GIF</translation>
    </message>
    <message>
        <source>Defaults for GIF screen recordings.</source>
        <comment>settings.capture.gif.desc</comment>
        <translation>GIF 屏幕录制的默认设置。</translation>
    </message>
    <message>
        <source>GIF fps</source>
        <comment>settings.capture.gifFps</comment>
        <translation>GIF 帧率</translation>
    </message>
    <message>
        <source>GIF duration (s)</source>
        <comment>settings.capture.gifDuration</comment>
        <translation>GIF 时长 (秒)</translation>
    </message>
    <message>
        <source>Pin</source>
        <comment>settings.pin.page.title</comment>
        <translation>贴图</translation>
    </message>
    <message>
        <source>Defaults for pinned screenshot windows.</source>
        <comment>settings.pin.page.desc</comment>
        <translation>贴图窗口的默认设置。</translation>
    </message>
    <message>
        <source>Appearance</source>
        <comment>settings.pin.appearance</comment>
        <translation>外观</translation>
    </message>
    <message>
        <source>Default opacity and where new pins appear on screen.</source>
        <comment>settings.pin.appearance.desc</comment>
        <translation>默认不透明度以及新贴图在屏幕上出现的位置。</translation>
    </message>
    <message>
        <source>Default opacity</source>
        <comment>settings.pin.opacity</comment>
        <translation>默认不透明度</translation>
    </message>
    <message>
        <source>Default position</source>
        <comment>settings.pin.position</comment>
        <translation>默认位置</translation>
    </message>
    <message>
        <source>Screen center</source>
        <comment>settings.pin.position.center</comment>
        <translation>屏幕中央</translation>
    </message>
    <message>
        <source>Under cursor</source>
        <comment>settings.pin.position.cursor</comment>
        <translation>鼠标指针处</translation>
    </message>
    <message>
        <source>Zoom</source>
        <comment>settings.pin.zoom</comment>
        <translation>缩放</translation>
    </message>
    <message>
        <source>How far a pin can be zoomed in or out with the scroll wheel.</source>
        <comment>settings.pin.zoom.desc</comment>
        <translation>用鼠标滚轮缩放贴图时的缩放范围。</translation>
    </message>
    <message>
        <source>Min zoom (%)</source>
        <comment>settings.pin.minZoom</comment>
        <translation>最小缩放 (%)</translation>
    </message>
    <message>
        <source>Max zoom (%)</source>
        <comment>settings.pin.maxZoom</comment>
        <translation>最大缩放 (%)</translation>
    </message>
    <message>
        <source>Privacy</source>
        <comment>settings.privacy.page.title</comment>
        <translation>隐私</translation>
    </message>
    <message>
        <source>Zelmor works fully offline. Confirm where your data lives and clear it on demand.</source>
        <comment>settings.privacy.page.desc</comment>
        <translation>Zelmor 完全离线工作。你可以确认数据的存放位置，并随时清除。</translation>
    </message>
    <message>
        <source>Data</source>
        <comment>settings.privacy.data</comment>
        <translation>数据</translation>
    </message>
    <message>
        <source>All captures and AI conversations stay on this machine. Nothing is uploaded.</source>
        <comment>settings.privacy.data.desc</comment>
        <translation>所有截图和 AI 对话都保存在本机，不会上传任何内容。</translation>
    </message>
    <message>
        <source>Clear capture history</source>
        <comment>settings.privacy.clear</comment>
        <translation>清除截图历史记录</translation>
    </message>
    <message>
        <source>Open data folder</source>
        <comment>settings.privacy.openFolder</comment>
        <translation>打开数据文件夹</translation>
    </message>
    <message>
        <source>Clear history</source>
        <comment>settings.privacy.clearTitle</comment>
        <translation>清除历史记录</translation>
    </message>
    <message>
        <source>Delete all history records? Files on disk are kept.</source>
        <comment>settings.privacy.clearConfirm</comment>
        <translation>删除所有历史记录？磁盘上的文件会保留。</translation>
    </message>
    <message>
        <source>About</source>
        <comment>settings.about.page.title</comment>
        <translation>关于</translation>
    </message>
    <message>
        <source>Version, updates, and open-source notices.</source>
        <comment>settings.about.page.desc</comment>
        <translation>版本、更新和开源声明。</translation>
    </message>
    <message>
        <source>Version %1</source>
        <comment>settings.about.version</comment>
        <translation>版本 %1</translation>
    </message>
    <message>
        <source>🌐 官方网站</source>
        <comment>settings.about.website</comment>
        <translation>🌐 官方网站</translation>
    </message>
    <message>
        <source>Open-source notice</source>
        <comment>settings.about.notice</comment>
        <translation>开源声明</translation>
    </message>
    <message>
        <source>Restart with elevated privileges so Zelmor can capture UAC prompts.</source>
        <comment>settings.general.runAsAdmin.desc</comment>
        <translation>以提升的权限重新启动，以便 Zelmor 能截取 UAC 提示。</translation>
    </message>
    <message>
        <source>Not active: another program holds this combination, or the system does not allow it.</source>
        <comment>settings.hotkeys.refused</comment>
        <translation>未生效：该组合键已被其他程序占用，或系统不允许使用。</translation>
    </message>
    <message>
        <source>Start with the session</source>
        <comment>settings.general.autoStart.session</comment>
        <translation>随会话启动</translation>
    </message>
    <message>
        <source>The autostart entry could not be changed.</source>
        <comment>settings.general.autoStart.failed</comment>
        <translation>无法更改自启动项。</translation>
    </message>
    <message>
        <source>Zelmor cannot bind global keys on this desktop. In the desktop&apos;s keyboard settings, bind each command below to a key; the keys below are suggestions.</source>
        <comment>settings.hotkeys.desktop.commands</comment>
        <translation>Zelmor 无法在此桌面上绑定全局快捷键。请在桌面的键盘设置中，把下面每条命令绑定到一个按键；下方的按键仅供参考。</translation>
    </message>
    <message>
        <source>Zelmor cannot bind global keys on this desktop. Add these lines to %1 and reload sway (Mod4+Shift+C). They follow the keys below.</source>
        <comment>settings.hotkeys.desktop.sway</comment>
        <translation>Zelmor 无法在此桌面上绑定全局快捷键。请把这些行加入 %1，然后重新加载 sway（Mod4+Shift+C）。它们随下方的按键而变。</translation>
    </message>
    <message>
        <source>The desktop binds the keys</source>
        <comment>settings.hotkeys.desktop</comment>
        <translation>由桌面绑定按键</translation>
    </message>
    <message>
        <source>Commands to bind</source>
        <comment>settings.hotkeys.desktop.commandsName</comment>
        <translation>要绑定的命令</translation>
    </message>
    <message>
        <source>Copy</source>
        <comment>settings.hotkeys.copy</comment>
        <translation>复制</translation>
    </message>
    <message>
        <source>Copied</source>
        <comment>settings.hotkeys.copied</comment>
        <translation>已复制</translation>
    </message>
    <message>
        <source>The commands are on the clipboard.</source>
        <comment>settings.hotkeys.copied.body</comment>
        <translation>命令已复制到剪贴板。</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::ShortcutSheetDialog</name>
    <message>
        <source>Capture region</source>
        <comment>shortcutSheet.row.region</comment>
        <translation>区域截图</translation>
    </message>
    <message>
        <source>Capture fullscreen</source>
        <comment>shortcutSheet.row.fullscreen</comment>
        <translation>全屏截图</translation>
    </message>
    <message>
        <source>Capture window</source>
        <comment>shortcutSheet.row.window</comment>
        <translation>窗口截图</translation>
    </message>
    <message>
        <source>Delayed capture</source>
        <comment>shortcutSheet.row.delayed</comment>
        <translation>延时截图</translation>
    </message>
    <message>
        <source>Record GIF</source>
        <comment>shortcutSheet.row.gif</comment>
        <translation>录制 GIF</translation>
    </message>
    <message>
        <source>Scroll capture</source>
        <comment>shortcutSheet.row.scroll</comment>
        <translation>滚动截图</translation>
    </message>
    <message>
        <source>Toggle pin click-through</source>
        <comment>shortcutSheet.row.pinClickThru</comment>
        <translation>切换贴图鼠标穿透</translation>
    </message>
    <message>
        <source>Pin from clipboard</source>
        <comment>shortcutSheet.row.pinClip</comment>
        <translation>从剪贴板贴图</translation>
    </message>
    <message>
        <source>Open history</source>
        <comment>shortcutSheet.row.history</comment>
        <translation>打开历史记录</translation>
    </message>
    <message>
        <source>Shortcut cheat sheet</source>
        <comment>shortcutSheet.row.sheet</comment>
        <translation>快捷键速查表</translation>
    </message>
    <message>
        <source>Zelmor — Shortcut cheat sheet</source>
        <comment>shortcutSheet.title</comment>
        <translation>Zelmor — 快捷键速查表</translation>
    </message>
    <message>
        <source>Current global hotkeys. Remap them in Settings → Hotkeys.</source>
        <comment>shortcutSheet.hint</comment>
        <translation>当前的全局快捷键。可在「设置 → 快捷键」中修改。</translation>
    </message>
    <message>
        <source>The keys Zelmor offers the desktop, which binds them; Settings → Hotkeys shows how.</source>
        <comment>shortcutSheet.hintDesktop</comment>
        <translation>Zelmor 提供给桌面的快捷键，由桌面绑定；设置 → 快捷键 中有绑定方法。</translation>
    </message>
    <message>
        <source>Action</source>
        <comment>shortcutSheet.col.action</comment>
        <translation>操作</translation>
    </message>
    <message>
        <source>Shortcut</source>
        <comment>shortcutSheet.col.shortcut</comment>
        <translation>快捷键</translation>
    </message>
    <message>
        <source>Copy the selection</source>
        <comment>shortcutSheet.overlay.copy</comment>
        <translation>复制选区</translation>
    </message>
    <message>
        <source>Save the selection</source>
        <comment>shortcutSheet.overlay.save</comment>
        <translation>保存选区</translation>
    </message>
    <message>
        <source>Undo</source>
        <comment>shortcutSheet.overlay.undo</comment>
        <translation>撤销</translation>
    </message>
    <message>
        <source>Redo</source>
        <comment>shortcutSheet.overlay.redo</comment>
        <translation>重做</translation>
    </message>
    <message>
        <source>Cancel, or drop the mark being drawn</source>
        <comment>shortcutSheet.overlay.cancel</comment>
        <translation>取消，或放弃正在绘制的标注</translation>
    </message>
    <message>
        <source>Rectangle, ellipse, arrow, line</source>
        <comment>shortcutSheet.overlay.shapes</comment>
        <translation>矩形、椭圆、箭头、直线</translation>
    </message>
    <message>
        <source>Brush, highlighter, mosaic</source>
        <comment>shortcutSheet.overlay.brushes</comment>
        <translation>画笔、荧光笔、马赛克</translation>
    </message>
    <message>
        <source>Text, counter, stamp</source>
        <comment>shortcutSheet.overlay.texts</comment>
        <translation>文字、序号、印章</translation>
    </message>
    <message>
        <source>Colour of the palette</source>
        <comment>shortcutSheet.overlay.palette</comment>
        <translation>调色板颜色</translation>
    </message>
    <message>
        <source>Size of the last mark</source>
        <comment>shortcutSheet.overlay.size</comment>
        <translation>最后一个标注的大小</translation>
    </message>
    <message>
        <source>Copy the colour under the pointer</source>
        <comment>shortcutSheet.overlay.pickColour</comment>
        <translation>复制指针下的颜色</translation>
    </message>
    <message>
        <source>Colour as RGB or hex</source>
        <comment>shortcutSheet.overlay.colourFormat</comment>
        <translation>颜色显示为 RGB 或十六进制</translation>
    </message>
    <message>
        <source>Ctrl+Wheel</source>
        <comment>shortcutSheet.overlay.wheel</comment>
        <translation>Ctrl+滚轮</translation>
    </message>
    <message>
        <source>Global hotkeys</source>
        <comment>shortcutSheet.global.title</comment>
        <translation>全局快捷键</translation>
    </message>
    <message>
        <source>In the capture overlay</source>
        <comment>shortcutSheet.overlay.title</comment>
        <translation>截图界面中</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::TaskItemRow</name>
    <message>
        <source>✅ 完成</source>
        <comment>task.finished</comment>
        <translation>✅ 完成</translation>
    </message>
    <message>
        <source>❌ 失败</source>
        <comment>task.failed</comment>
        <translation>❌ 失败</translation>
    </message>
    <message>
        <source>已取消</source>
        <comment>task.cancelled</comment>
        <translation>已取消</translation>
    </message>
    <message>
        <source>⏳ 处理中</source>
        <comment>task.running</comment>
        <translation>⏳ 处理中</translation>
    </message>
    <message>
        <source>取消</source>
        <comment>task.cancel</comment>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::TaskNotificationToast</name>
    <message>
        <source>⚡ AI 后台任务管理器</source>
        <comment>task.manager.title</comment>
        <translation>⚡ AI 后台任务管理器</translation>
    </message>
    <message>
        <source>Close</source>
        <comment>task.close</comment>
        <translation>关闭</translation>
    </message>
    <message>
        <source>⚡ AI 后台任务 (%1 处理中)</source>
        <comment>task.header.active</comment>
        <translation>⚡ AI 后台任务 (%1 处理中)</translation>
    </message>
    <message>
        <source>⚡ AI 后台任务 (处理完成)</source>
        <comment>task.header.finished</comment>
        <translation>⚡ AI 后台任务 (处理完成)</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::overlay::OverlayPanels</name>
    <message>
        <source>Copy</source>
        <comment>overlay.btn.copy</comment>
        <translation>复制</translation>
    </message>
    <message>
        <source>Pin</source>
        <comment>overlay.btn.pin</comment>
        <translation>贴图</translation>
    </message>
    <message>
        <source>Save</source>
        <comment>overlay.btn.save</comment>
        <translation>保存</translation>
    </message>
    <message>
        <source>Extract Text (OCR)</source>
        <comment>overlay.btn.ocr</comment>
        <translation>提取文字 (OCR)</translation>
    </message>
    <message>
        <source>Translate Image</source>
        <comment>overlay.btn.translate</comment>
        <translation>翻译图片</translation>
    </message>
    <message>
        <source>AI Auto Annotate UI</source>
        <comment>overlay.btn.aiAnnotate</comment>
        <translation>AI 自动标注界面</translation>
    </message>
    <message>
        <source>Undo</source>
        <comment>overlay.btn.undo</comment>
        <translation>撤销</translation>
    </message>
    <message>
        <source>Redo</source>
        <comment>overlay.btn.redo</comment>
        <translation>重做</translation>
    </message>
    <message>
        <source>Reselect</source>
        <comment>overlay.btn.reselect</comment>
        <translation>重新选择区域</translation>
    </message>
    <message>
        <source>Cancel</source>
        <comment>overlay.btn.cancel</comment>
        <translation>取消</translation>
    </message>
    <message>
        <source>Start</source>
        <comment>overlay.btn.start</comment>
        <translation>开始</translation>
    </message>
    <message>
        <source>Scroll for me</source>
        <comment>overlay.btn.autoScroll</comment>
        <translation>自动滚动</translation>
    </message>
    <message>
        <source>Select / Move</source>
        <comment>annotate.tool.select</comment>
        <translation>选择 / 移动</translation>
    </message>
    <message>
        <source>Rectangle</source>
        <comment>annotate.tool.rect</comment>
        <translation>矩形</translation>
    </message>
    <message>
        <source>Ellipse</source>
        <comment>annotate.tool.ellipse</comment>
        <translation>椭圆</translation>
    </message>
    <message>
        <source>Arrow</source>
        <comment>annotate.tool.arrow</comment>
        <translation>箭头</translation>
    </message>
    <message>
        <source>Line</source>
        <comment>annotate.tool.line</comment>
        <translation>直线</translation>
    </message>
    <message>
        <source>Brush</source>
        <comment>annotate.tool.brush</comment>
        <translation>画笔</translation>
    </message>
    <message>
        <source>Highlighter</source>
        <comment>annotate.tool.highlight</comment>
        <translation>荧光笔</translation>
    </message>
    <message>
        <source>Mosaic</source>
        <comment>annotate.tool.mosaic</comment>
        <translation>马赛克</translation>
    </message>
    <message>
        <source>Blur</source>
        <comment>annotate.tool.blur</comment>
        <translation>模糊</translation>
    </message>
    <message>
        <source>Text</source>
        <comment>annotate.tool.text</comment>
        <translation>文字</translation>
    </message>
    <message>
        <source>Counter</source>
        <comment>annotate.tool.counter</comment>
        <translation>序号</translation>
    </message>
    <message>
        <source>Stamp</source>
        <comment>annotate.tool.stamp</comment>
        <translation>图章</translation>
    </message>
    <message>
        <source>Manual</source>
        <comment>overlay.dur.manual</comment>
        <translation>手动停止</translation>
    </message>
    <message>
        <source>5s</source>
        <comment>overlay.dur.5s</comment>
        <translation>5 秒</translation>
    </message>
    <message>
        <source>10s</source>
        <comment>overlay.dur.10s</comment>
        <translation>10 秒</translation>
    </message>
    <message>
        <source>15s</source>
        <comment>overlay.dur.15s</comment>
        <translation>15 秒</translation>
    </message>
    <message>
        <source>30s</source>
        <comment>overlay.dur.30s</comment>
        <translation>30 秒</translation>
    </message>
    <message>
        <source>1 min</source>
        <comment>overlay.dur.1m</comment>
        <translation>1 分钟</translation>
    </message>
    <message>
        <source>2 min</source>
        <comment>overlay.dur.2m</comment>
        <translation>2 分钟</translation>
    </message>
    <message>
        <source>5 min</source>
        <comment>overlay.dur.5m</comment>
        <translation>5 分钟</translation>
    </message>
    <message>
        <source>8 fps</source>
        <comment>overlay.fps.8</comment>
        <translation>8 帧/秒</translation>
    </message>
    <message>
        <source>10 fps</source>
        <comment>overlay.fps.10</comment>
        <translation>10 帧/秒</translation>
    </message>
    <message>
        <source>15 fps</source>
        <comment>overlay.fps.15</comment>
        <translation>15 帧/秒</translation>
    </message>
    <message>
        <source>24 fps</source>
        <comment>overlay.fps.24</comment>
        <translation>24 帧/秒</translation>
    </message>
    <message>
        <source>30 fps</source>
        <comment>overlay.fps.30</comment>
        <translation>30 帧/秒</translation>
    </message>
    <message>
        <source>Recording duration</source>
        <comment>overlay.label.duration</comment>
        <translation>录制时长</translation>
    </message>
    <message>
        <source>Frame rate</source>
        <comment>overlay.label.fps</comment>
        <translation>帧率</translation>
    </message>
    <message>
        <source>Pen width</source>
        <comment>annotate.label.width</comment>
        <translation>线条粗细</translation>
    </message>
    <message>
        <source>Font size</source>
        <comment>annotate.label.font</comment>
        <translation>字号</translation>
    </message>
    <message>
        <source>Red</source>
        <comment>overlay.colour.red</comment>
        <translation>红色</translation>
    </message>
    <message>
        <source>Yellow</source>
        <comment>overlay.colour.yellow</comment>
        <translation>黄色</translation>
    </message>
    <message>
        <source>Green</source>
        <comment>overlay.colour.green</comment>
        <translation>绿色</translation>
    </message>
    <message>
        <source>Blue</source>
        <comment>overlay.colour.blue</comment>
        <translation>蓝色</translation>
    </message>
    <message>
        <source>Orange</source>
        <comment>overlay.colour.orange</comment>
        <translation>橙色</translation>
    </message>
    <message>
        <source>Pink</source>
        <comment>overlay.colour.pink</comment>
        <translation>粉色</translation>
    </message>
    <message>
        <source>Purple</source>
        <comment>overlay.colour.purple</comment>
        <translation>紫色</translation>
    </message>
    <message>
        <source>Black</source>
        <comment>overlay.colour.black</comment>
        <translation>黑色</translation>
    </message>
    <message>
        <source>White</source>
        <comment>overlay.colour.white</comment>
        <translation>白色</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::settings::UpdateSection</name>
    <message>
        <source>Check for updates</source>
        <comment>settings.about.checkUpdates</comment>
        <translation>检查更新</translation>
    </message>
    <message>
        <source>Last checked: never</source>
        <comment>settings.about.lastChecked</comment>
        <translation>上次检查: 从未</translation>
    </message>
    <message>
        <source>You&apos;re on the latest version.</source>
        <comment>settings.about.upToDate</comment>
        <translation>您使用的已是最新版本。</translation>
    </message>
    <message>
        <source>Check failed: %1</source>
        <comment>settings.about.checkFailed</comment>
        <translation>检查失败: %1</translation>
    </message>
    <message>
        <source>Saved to %1. Install the package from there, then restart Zelmor.</source>
        <comment>settings.about.downloaded</comment>
        <translation>已保存到 %1。请从该处安装软件包，然后重新启动 Zelmor。</translation>
    </message>
    <message>
        <source>Download failed: %1</source>
        <comment>settings.about.downloadFailed</comment>
        <translation>下载失败: %1</translation>
    </message>
    <message>
        <source>Checking…</source>
        <comment>settings.about.checking</comment>
        <translation>正在检查…</translation>
    </message>
    <message>
        <source>Update available: %1</source>
        <comment>settings.about.available</comment>
        <translation>有可用更新: %1</translation>
    </message>
    <message>
        <source>Update available</source>
        <comment>settings.about.availableTitle</comment>
        <translation>有可用更新</translation>
    </message>
    <message>
        <source>Version %1 is available. Download it to your download folder now?

%2</source>
        <comment>settings.about.availableAsk</comment>
        <translation>版本 %1 已发布。现在下载到您的下载文件夹吗？

%2</translation>
    </message>
    <message>
        <source>Downloading…</source>
        <comment>settings.about.downloading</comment>
        <translation>正在下载…</translation>
    </message>
    <message>
        <source>Downloading… %1%</source>
        <comment>settings.about.downloadingPercent</comment>
        <translation>正在下载… %1%</translation>
    </message>
    <message>
        <source>Downloading… %1 MB</source>
        <comment>settings.about.downloadingMb</comment>
        <translation>正在下载… %1 MB</translation>
    </message>
    <message>
        <source>Version %1 is available. Download and install now?

%2</source>
        <comment>settings.about.availableAskInstall</comment>
        <translation>版本 %1 已发布。现在下载并安装吗？

%2</translation>
    </message>
    <message>
        <source>Installer launched: %1. Zelmor will now quit.</source>
        <comment>settings.about.installerLaunched</comment>
        <translation>安装程序已启动: %1。Zelmor 即将退出。</translation>
    </message>
</context>
</TS>
