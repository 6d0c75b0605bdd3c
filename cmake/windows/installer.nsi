; SPDX-License-Identifier: MIT
; The installer, for one user and without an administrator. Installer.cmake makes it of the zip's files and says:
;   VERSION       the product's
;   SOURCE        the folder with all that is installed
;   FILES         a file of this language with the macros InstallFiles and DeleteFiles for exactly these
;   KILOBYTES     how large they are
;   LICENCE       the page's text
;   PATH_PROGRAM  the program that changes the user's search path: strings here end after 1023 characters
;   OUTPUT        the installer
; As all that it brings.
Target amd64-unicode
ManifestDPIAware true
RequestExecutionLevel user
SetCompressor /SOLID lzma
Name "Vireo"
OutFile "${OUTPUT}"
BrandingText "Vireo ${VERSION}"
InstallDir "$LOCALAPPDATA\Programs\Vireo"
InstallDirRegKey HKCU "Software\Vireo Filters" "Folder"

!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include Sections.nsh
!include "${FILES}"

!define PRODUCT_KEY "Software\Vireo Filters"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Vireo"
!define CLASSES "Software\Classes"
!define PROGRAM_KEY "${CLASSES}\Applications\VireoPreview.exe"

VIProductVersion "${VERSION}.0"
VIAddVersionKey /LANG=0 ProductName "Vireo"
VIAddVersionKey /LANG=0 ProductVersion "${VERSION}"
VIAddVersionKey /LANG=0 FileVersion "${VERSION}"
VIAddVersionKey /LANG=0 FileDescription "Vireo Setup"
VIAddVersionKey /LANG=0 CompanyName "Vireo developers"
VIAddVersionKey /LANG=0 LegalCopyright "Vireo developers"

!define MUI_ABORTWARNING
!define MUI_COMPONENTSPAGE_NODESC
!define MUI_FINISHPAGE_SHOWREADME "$INSTDIR\README.txt"
!insertmacro MUI_PAGE_LICENSE "${LICENCE}"
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
; The first is for everybody else.
!insertmacro MUI_LANGUAGE English
!insertmacro MUI_LANGUAGE French
!insertmacro MUI_LANGUAGE German
!insertmacro MUI_LANGUAGE Japanese
!insertmacro MUI_LANGUAGE Spanish
!insertmacro MUI_LANGUAGE Italian
!insertmacro MUI_LANGUAGE Korean

!macro Texts LANGUAGE FILES_TEXT START_MENU EXPLORER SEARCH_PATH OPEN PROMPT IN_USE
  LangString FilesText ${LANG_${LANGUAGE}} "${FILES_TEXT}"
  LangString StartMenuText ${LANG_${LANGUAGE}} "${START_MENU}"
  LangString ExplorerText ${LANG_${LANGUAGE}} "${EXPLORER}"
  LangString SearchPathText ${LANG_${LANGUAGE}} "${SEARCH_PATH}"
  LangString OpenText ${LANG_${LANGUAGE}} "${OPEN}"
  LangString PromptText ${LANG_${LANGUAGE}} "${PROMPT}"
  LangString InUseText ${LANG_${LANGUAGE}} "${IN_USE}"
!macroend
!insertmacro Texts ENGLISH "Vireo" "Start menu" "“Open with Vireo preview” in the Explorer" \
  "The command vireo in every command prompt (PATH)" "Open with Vireo preview" "Vireo command prompt" \
  "A program in this folder is running or cannot be replaced. Close it and try again:"
!insertmacro Texts FRENCH "Vireo" "Menu Démarrer" "« Ouvrir avec l'aperçu Vireo » dans l'Explorateur" \
  "La commande vireo dans toute invite de commandes (PATH)" "Ouvrir avec l'aperçu Vireo" "Invite de commandes Vireo" \
  "Un programme de ce dossier est en cours d'exécution ou ne peut être remplacé. Fermez-le et réessayez :"
!insertmacro Texts GERMAN "Vireo" "Startmenü" "„Mit Vireo-Vorschau öffnen“ im Explorer" \
  "Der Befehl vireo in jeder Eingabeaufforderung (PATH)" "Mit Vireo-Vorschau öffnen" "Vireo-Eingabeaufforderung" \
  "Ein Programm in diesem Ordner läuft oder lässt sich nicht ersetzen. Schließen Sie es und versuchen Sie es noch einmal:"
!insertmacro Texts JAPANESE "Vireo" "スタート メニュー" "エクスプローラーの「Vireo プレビューで開く」" \
  "すべてのコマンド プロンプトで vireo コマンドを使う (PATH)" "Vireo プレビューで開く" "Vireo コマンド プロンプト" \
  "このフォルダーのプログラムが実行中か、置き換えられません。終了してからやり直してください:"
!insertmacro Texts SPANISH "Vireo" "Menú Inicio" "«Abrir con la vista previa de Vireo» en el Explorador" \
  "La orden vireo en cualquier símbolo del sistema (PATH)" "Abrir con la vista previa de Vireo" "Símbolo del sistema de Vireo" \
  "Un programa de esta carpeta está en uso o no se puede sustituir. Ciérrelo e inténtelo de nuevo:"
!insertmacro Texts ITALIAN "Vireo" "Menu Start" "«Apri con l'anteprima di Vireo» in Esplora file" \
  "Il comando vireo in ogni prompt dei comandi (PATH)" "Apri con l'anteprima di Vireo" "Prompt dei comandi di Vireo" \
  "Un programma in questa cartella è in esecuzione o non può essere sostituito. Chiuderlo e riprovare:"
!insertmacro Texts KOREAN "Vireo" "시작 메뉴" "탐색기의 ‘Vireo 미리 보기로 열기’" \
  "모든 명령 프롬프트에서 vireo 명령 사용 (PATH)" "Vireo 미리 보기로 열기" "Vireo 명령 프롬프트" \
  "이 폴더의 프로그램이 실행 중이거나 바꿀 수 없습니다. 닫고 다시 시도하십시오:"

; How a change of the environment or of file types is told to programs that run.
!macro TellEnvironment
  SendMessage ${HWND_BROADCAST} ${WM_SETTINGCHANGE} 0 "STR:Environment" /TIMEOUT=2000
!macroend
!macro TellFileTypes
  System::Call 'shell32::SHChangeNotify(i 0x08000000, i 0, p 0, p 0)'
!macroend

; Runs the program that changes the search path; not 0 in $0 where it failed.
!macro ChangePath VERB
  InitPluginsDir
  SetDateSave off  ; it has that of its build
  File "/oname=$PLUGINSDIR\user_path.exe" "${PATH_PROGRAM}"
  SetDateSave on
  nsExec::Exec '"$PLUGINSDIR\user_path.exe" ${VERB} "$INSTDIR"'
  Pop $0
  !insertmacro TellEnvironment
!macroend

; Goes on when nothing holds the file.
!macro RefuseUsed FILE
  ${If} ${FileExists} "${FILE}"
    ClearErrors
    FileOpen $0 "${FILE}" a
    ${If} ${Errors}
      MessageBox MB_OK|MB_ICONSTOP "$(InUseText)$\r$\n${FILE}" /SD IDOK
      SetErrorLevel 2
      Abort
    ${EndIf}
    FileClose $0
  ${EndIf}
!macroend

Section "!$(FilesText)" FilesSection
  SectionIn RO
  !insertmacro RefuseUsed "$INSTDIR\vireo.exe"
  !insertmacro RefuseUsed "$INSTDIR\VireoHost.dll"
  ; An older version goes whole, so that nothing stays that this one has not.
  ${If} ${FileExists} "$INSTDIR\Uninstall.exe"
    ExecWait '"$INSTDIR\Uninstall.exe" /S _?=$INSTDIR' $0
  ${EndIf}
  SetOverwrite on
  !insertmacro InstallFiles
  WriteUninstaller "$INSTDIR\Uninstall.exe"

  WriteRegStr HKCU "${PRODUCT_KEY}" "Folder" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "Vireo ${VERSION}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\VireoPreview.exe"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "Vireo developers"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\Uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\Uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" ${KILOBYTES}
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section "$(StartMenuText)" StartMenuSection
  CreateDirectory "$SMPROGRAMS\Vireo"
  SetOutPath "$PROFILE"
  CreateShortcut "$SMPROGRAMS\Vireo\$(PromptText).lnk" "$SYSDIR\cmd.exe" \
    '/k "set "PATH=$INSTDIR;%PATH%" & vireo --help"' "$INSTDIR\VireoPreview.exe"
  SetOutPath "$INSTDIR"
  CreateShortcut "$SMPROGRAMS\Vireo\README.lnk" "$INSTDIR\README.txt"
  CreateShortcut "$SMPROGRAMS\Vireo\Uninstall.lnk" "$INSTDIR\Uninstall.exe"
SectionEnd

; Of pictures and videos, whatever program opens them.
!macro Verb KIND
  WriteRegStr HKCU "${CLASSES}\SystemFileAssociations\${KIND}\shell\VireoPreview" "" "$(OpenText)"
  WriteRegStr HKCU "${CLASSES}\SystemFileAssociations\${KIND}\shell\VireoPreview" "Icon" "$INSTDIR\VireoPreview.exe"
  WriteRegStr HKCU "${CLASSES}\SystemFileAssociations\${KIND}\shell\VireoPreview\command" "" '"$INSTDIR\VireoPreview.exe" "%1"'
  WriteRegStr HKCU "${CLASSES}\SystemFileAssociations\${KIND}\OpenWithList\VireoPreview.exe" "" ""
!macroend
!macro NoVerb KIND
  DeleteRegKey HKCU "${CLASSES}\SystemFileAssociations\${KIND}\shell\VireoPreview"
  DeleteRegKey HKCU "${CLASSES}\SystemFileAssociations\${KIND}\OpenWithList\VireoPreview.exe"
  DeleteRegKey /ifempty HKCU "${CLASSES}\SystemFileAssociations\${KIND}\shell"
  DeleteRegKey /ifempty HKCU "${CLASSES}\SystemFileAssociations\${KIND}\OpenWithList"
  DeleteRegKey /ifempty HKCU "${CLASSES}\SystemFileAssociations\${KIND}"
!macroend

Section "$(ExplorerText)" ExplorerSection
  !insertmacro Verb image
  !insertmacro Verb video
  WriteRegStr HKCU "${PROGRAM_KEY}" "FriendlyAppName" "Vireo preview"
  WriteRegStr HKCU "${PROGRAM_KEY}\shell\open\command" "" '"$INSTDIR\VireoPreview.exe" "%1"'
  !insertmacro TellFileTypes
SectionEnd

Section /o "$(SearchPathText)" SearchPathSection
  !insertmacro ChangePath add
  ${If} $0 != 0
    SetErrorLevel 2
  ${EndIf}
SectionEnd

; vireo-setup.exe /S /PATH /NOEXPLORER /NOSTARTMENU /D=C:\any folder
Function .onInit
  ${GetParameters} $1
  ClearErrors
  ${GetOptions} $1 "/PATH" $0
  ${IfNot} ${Errors}
    !insertmacro SelectSection ${SearchPathSection}
  ${EndIf}
  ClearErrors
  ${GetOptions} $1 "/NOEXPLORER" $0
  ${IfNot} ${Errors}
    !insertmacro UnselectSection ${ExplorerSection}
  ${EndIf}
  ClearErrors
  ${GetOptions} $1 "/NOSTARTMENU" $0
  ${IfNot} ${Errors}
    !insertmacro UnselectSection ${StartMenuSection}
  ${EndIf}
  ; As it was chosen the last time.
  ReadRegDWORD $0 HKCU "${PRODUCT_KEY}" "SearchPath"
  ${If} $0 == 1
    !insertmacro SelectSection ${SearchPathSection}
  ${EndIf}
  ClearErrors
FunctionEnd

Section -Remember
  ${If} ${SectionIsSelected} ${SearchPathSection}
    WriteRegDWORD HKCU "${PRODUCT_KEY}" "SearchPath" 1
  ${EndIf}
SectionEnd

Section Uninstall
  !insertmacro RefuseUsed "$INSTDIR\vireo.exe"
  !insertmacro RefuseUsed "$INSTDIR\VireoHost.dll"
  !insertmacro ChangePath remove
  !insertmacro NoVerb image
  !insertmacro NoVerb video
  DeleteRegKey /ifempty HKCU "${CLASSES}\SystemFileAssociations"
  DeleteRegKey HKCU "${PROGRAM_KEY}"
  DeleteRegKey /ifempty HKCU "${CLASSES}\Applications"
  !insertmacro TellFileTypes
  Delete "$SMPROGRAMS\Vireo\*.lnk"
  RMDir "$SMPROGRAMS\Vireo"
  DeleteRegKey HKCU "${UNINSTALL_KEY}"
  DeleteRegKey HKCU "${PRODUCT_KEY}"
  ; What somebody else put there stays.
  !insertmacro DeleteFiles
  Delete "$INSTDIR\Uninstall.exe"
  SetOutPath "$TEMP"
  RMDir "$INSTDIR"
SectionEnd
