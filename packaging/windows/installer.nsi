; Zelmor-Qt-Setup.exe: installs the Windows edition for the current user or for all users,
; with a Start-menu entry, an entry in "Apps & features" and, if chosen, a start with Windows.
; Built by scripts/dist-windows.sh, which defines:
;   VERSION   the program's version, a.b.c
;   SOURCE    the laid-out program folder (the zip's Zelmor folder)
;   FILES     a folder with install-files.nsh and uninstall-files.nsh, the folder's file list
;   SIZE_KB   the installed size
;   ICON      the program's .ico
;   OUTFILE   the installer to write
; Silent use: Zelmor-Qt-Setup.exe /S [/CurrentUser | /AllUsers] [/D=folder]

; A 64-bit installer for the 64-bit program; it runs where the program runs.
Target amd64-unicode
ManifestDPIAware true
SetCompressor /SOLID lzma

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Zelmor"
; The value the program's own "Start with Windows" setting reads and writes.
!define RUN_KEY "Software\Microsoft\Windows\CurrentVersion\Run"
!define RUN_VALUE "Zelmor"

Name "Zelmor"
OutFile "${OUTFILE}"
BrandingText "Zelmor ${VERSION}"

VIProductVersion "${VERSION}.0"
VIAddVersionKey /LANG=0 "ProductName" "Zelmor"
VIAddVersionKey /LANG=0 "ProductVersion" "${VERSION}"
VIAddVersionKey /LANG=0 "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=0 "FileDescription" "Zelmor Setup"
VIAddVersionKey /LANG=0 "CompanyName" "The Zelmor developers"
VIAddVersionKey /LANG=0 "LegalCopyright" "Copyright (C) 2026 The Zelmor developers. GPL-3.0-or-later."

; Per user by default, which needs no administrator; for all users when chosen, or when an
; earlier version was installed that way.
!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_INSTALLMODE_DEFAULT_CURRENTUSER
!define MULTIUSER_USE_PROGRAMFILES64
!define MULTIUSER_INSTALLMODE_INSTDIR "Zelmor"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "${UNINSTALL_KEY}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_KEY "${UNINSTALL_KEY}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_VALUENAME "InstallLocation"
!include MultiUser.nsh
!include MUI2.nsh
!include LogicLib.nsh
!include Sections.nsh

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING
!define MUI_COMPONENTSPAGE_NODESC

!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_LICENSE "${SOURCE}\LICENSE.txt"
!insertmacro MULTIUSER_PAGE_INSTALLMODE
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_FUNCTION StartZelmor
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "English"
!insertmacro MUI_LANGUAGE "SimpChinese"

LangString SectionAutostart ${LANG_ENGLISH} "Start with Windows"
LangString SectionAutostart ${LANG_SIMPCHINESE} "开机自动启动"
LangString ZelmorRunning ${LANG_ENGLISH} "Zelmor is running and will be closed to go on. A Zelmor tool server that an AI client started is closed too; the client starts it again."
LangString ZelmorRunning ${LANG_SIMPCHINESE} "Zelmor 正在运行，将关闭它后继续。AI 客户端启动的 Zelmor 工具服务也会关闭，客户端会重新启动它。"
LangString ZelmorStillRunning ${LANG_ENGLISH} "Zelmor could not be closed. Quit it from its icon in the notification area and try again."
LangString ZelmorStillRunning ${LANG_SIMPCHINESE} "无法关闭 Zelmor。请从通知区域的图标退出它，然后重试。"

; A running copy holds its program and libraries open, so neither can be replaced or removed:
; it is closed first, after asking.
!macro CLOSE_ZELMOR un
Function ${un}CloseZelmor
  StrCpy $R0 0
  ${Do}
    StrCpy $R2 ""
    ${If} ${FileExists} "$INSTDIR\zelmor.exe"
      ClearErrors
      FileOpen $R1 "$INSTDIR\zelmor.exe" a
      ${If} ${Errors}
        StrCpy $R2 "busy"
      ${Else}
        FileClose $R1
      ${EndIf}
    ${EndIf}
    ${If} ${FileExists} "$INSTDIR\zelmor-mcp.exe"
      ClearErrors
      FileOpen $R1 "$INSTDIR\zelmor-mcp.exe" a
      ${If} ${Errors}
        StrCpy $R2 "busy"
      ${Else}
        FileClose $R1
      ${EndIf}
    ${EndIf}
    ${If} $R2 == ""
      Return
    ${EndIf}
    ${If} $R0 == 0
      MessageBox MB_OKCANCEL|MB_ICONINFORMATION "$(ZelmorRunning)" /SD IDOK IDOK close
      SetErrorLevel 1
      Quit
      close:
      ; Asked first, so that it ends as from its tray menu and returns when it has; only what
      ; is still running a second later (an older version, a tool server) is ended by force.
      ${If} ${FileExists} "$INSTDIR\zelmor.exe"
        nsExec::Exec '"$INSTDIR\zelmor.exe" --quit'
        Pop $R1
      ${EndIf}
    ${ElseIf} $R0 == 4
      nsExec::Exec 'taskkill /F /IM zelmor.exe'
      Pop $R1
      nsExec::Exec 'taskkill /F /IM zelmor-mcp.exe'
      Pop $R1
    ${EndIf}
    Sleep 250
    IntOp $R0 $R0 + 1
  ${LoopUntil} $R0 >= 40
  MessageBox MB_OK|MB_ICONSTOP "$(ZelmorStillRunning)" /SD IDOK
  SetErrorLevel 2
  Quit
FunctionEnd
!macroend
!insertmacro CLOSE_ZELMOR ""
!insertmacro CLOSE_ZELMOR "un."

; Started through Explorer, so that it runs as the user even from an elevated installer.
Function StartZelmor
  Exec '"$WINDIR\explorer.exe" "$INSTDIR\zelmor.exe"'
FunctionEnd

Section "Zelmor" SectionMain
  SectionIn RO
  Call CloseZelmor
  !include "${FILES}\install-files.nsh"
  SetOutPath "$INSTDIR"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateShortcut "$SMPROGRAMS\Zelmor.lnk" "$INSTDIR\zelmor.exe"

  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayName" "Zelmor"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\zelmor.exe,0"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "Publisher" "The Zelmor developers"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "URLInfoAbout" "https://zelmor.app"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode'
  WriteRegStr SHCTX "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /$MultiUser.InstallMode /S'
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "EstimatedSize" ${SIZE_KB}
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section /o "$(SectionAutostart)" SectionAutostart
  WriteRegStr HKCU "${RUN_KEY}" "${RUN_VALUE}" '"$INSTDIR\zelmor.exe"'
SectionEnd

Section "-AutostartOff"
  ${IfNot} ${SectionIsSelected} ${SectionAutostart}
    DeleteRegValue HKCU "${RUN_KEY}" "${RUN_VALUE}"
  ${EndIf}
SectionEnd

Section "Uninstall"
  Call un.CloseZelmor
  DeleteRegValue HKCU "${RUN_KEY}" "${RUN_VALUE}"
  Delete "$SMPROGRAMS\Zelmor.lnk"
  ; The files this installer put there, never the folder's other contents.
  !include "${FILES}\uninstall-files.nsh"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  DeleteRegKey SHCTX "${UNINSTALL_KEY}"
SectionEnd

Function .onInit
  SetRegView 64
  !insertmacro MULTIUSER_INIT
  ; The start with Windows stays as the user last set it, here or in Zelmor's settings.
  ReadRegStr $0 HKCU "${RUN_KEY}" "${RUN_VALUE}"
  ${If} $0 != ""
    !insertmacro SelectSection ${SectionAutostart}
  ${EndIf}
FunctionEnd

Function un.onInit
  SetRegView 64
  !insertmacro MULTIUSER_UNINIT
FunctionEnd
