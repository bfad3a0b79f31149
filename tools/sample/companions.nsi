; Products that belong to others though nothing of theirs says so: only the rule files in host/Config tie them together.
; Each has a folder and an entry of its own.
!include "common.nsh"
Name "Companions"
OutFile "companions-setup.exe"
InstallDir "$PROGRAMFILES32"
RequestExecutionLevel admin

; FOLDER and NAME of the product, the PROGRAM built for it, VERSION and MAKER. The entry's key is the name.
!macro Companion FOLDER NAME PROGRAM VERSION MAKER
  SetOutPath "$PROGRAMFILES32\${FOLDER}"
  File "${PROGRAM}"
  WriteUninstaller "$PROGRAMFILES32\${FOLDER}\remove.exe"
  StrCpy $INSTDIR "$PROGRAMFILES32\${FOLDER}"
  WriteRegStr HKLM "${UNINSTALL}\${NAME}" "DisplayName" "${NAME}"
  WriteRegStr HKLM "${UNINSTALL}\${NAME}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL}\${NAME}" "Publisher" "${MAKER}"
  WriteRegStr HKLM "${UNINSTALL}\${NAME}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL}\${NAME}" "UninstallString" '"$INSTDIR\remove.exe"'
  !insertmacro WriteInstallDate HKLM "${UNINSTALL}\${NAME}"
  !insertmacro WriteEstimatedSize HKLM "${UNINSTALL}\${NAME}"
!macroend

Section
  SetShellVarContext all
  !insertmacro Companion "Lutrine Letterheads" "Otterquill Letterheads" "letters.exe" "1.0.0" "Lutrine Letters"
  !insertmacro Companion "Lutrine Spelling" "Lutrine Spelling Service" "spelling.dll" "3.1.0" "Lutrine Letters"
  WriteRegDWORD HKLM "${UNINSTALL}\Lutrine Spelling Service" "SystemComponent" 1
  !insertmacro Companion "Osmundgate Relay" "Osmundgate Relay" "relay.exe" "5.0.0" "Osmundgate Networks"
  !insertmacro Companion "Osmundgate Keys" "Osmundgate Keys" "keys.exe" "2.2.0" "Osmundgate Networks"
  !insertmacro Companion "Fennmark Viewer" "Fennmark Viewer 2" "viewer.exe" "2.0.0" "Fennmark Tools"
  SetOutPath "$APPDATA\Fennmark\Archiver 4"
  File "/oname=profile.txt" "archiver.txt"
  SetOutPath "$APPDATA\Fennmark\Shared 4\fonts"
  File "/oname=plain.txt" "archiver.txt"
SectionEnd

Section "Uninstall"
  RMDir /r "$INSTDIR"
SectionEnd
