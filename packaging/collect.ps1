<#
.SYNOPSIS
Packs what support needs to look at a camera fault into one archive, and says beforehand what is in it.

.DESCRIPTION
Gathers the state of the installation, the module's text log, crash records and the driver installation log; with -Record
also a trace while the fault is shown. Nothing leaves the machine: the archive is a file, and is written only after the list
of its contents was agreed to. Run it elevated.

.PARAMETER Record
Records a trace: start, reproduce the fault, press Enter.

.PARAMETER Detail
Light: errors and state changes; for faults that need minutes. Verbose: every call.

.PARAMETER Recording
Files or folders of recorded frames to add. They show what the camera saw.

.PARAMETER Yes
Does not ask.

.EXAMPLE
powershell -ExecutionPolicy Bypass -File collect.ps1 -Record -HardwareId "USB\VID_1234&PID_5678"
#>
[CmdletBinding()]
param(
    [switch]$Record,
    [ValidateSet('Light', 'Verbose')][string]$Detail = 'Verbose',
    [string[]]$Recording = @(),
    [string]$HardwareId = '',
    [string]$Output = ('tarn-support-{0:yyyyMMdd-HHmmss}.zip' -f (Get-Date)),
    [switch]$Yes
)
Set-StrictMode -Version 2
$ErrorActionPreference = 'Stop'

$Work = Join-Path ([IO.Path]::GetTempPath()) ('tarn-support-' + [Guid]::NewGuid().ToString('N'))
$Contents = New-Object System.Collections.ArrayList

# Runs one step; what it leaves in the work folder goes onto the list with these words.
function Add-Part([string]$Name, [string]$Says, [scriptblock]$Step) {
    $part = Join-Path $Work $Name
    try {
        & $Step $part
    }
    catch {
        [void]$Contents.Add(('{0,-28} missing: {1}' -f $Name, $_.Exception.Message))
        return
    }
    if (Test-Path -LiteralPath $part) {
        $bytes = (Get-ChildItem -LiteralPath $part -Recurse -File | Measure-Object -Property Length -Sum).Sum
        [void]$Contents.Add(('{0,-28} {1,9:N0} KB  {2}' -f $Name, [Math]::Ceiling($bytes / 1KB), $Says))
    }
}

# Fails when a recording runs already, and leaves that alone.
function Save-Trace([string]$Path) {
    $tracing = Join-Path $PSScriptRoot 'tarn.wprp'
    & wpr.exe -start "$tracing!Tarn.$Detail" -filemode
    if ($LASTEXITCODE -ne 0) { throw "wpr -start failed with $LASTEXITCODE; 'wpr -cancel' ends a recording that was left" }
    Read-Host 'Recording. Show the fault, then press Enter' | Out-Null
    & wpr.exe -stop $Path
    if ($LASTEXITCODE -ne 0) { throw "wpr -stop failed with $LASTEXITCODE" }
}

function Save-Installation([string]$Path) {
    $check = Join-Path $PSScriptRoot 'check-install.ps1'
    $shell = (Get-Process -Id $PID).Path
    $arguments = @('-NoProfile', '-ExecutionPolicy', 'Bypass', '-File', $check, '-Output', $Path)
    if ($HardwareId) { $arguments += @('-HardwareId', $HardwareId) }
    & $shell @arguments | Out-File -LiteralPath ([IO.Path]::ChangeExtension($Path, '.txt')) -Encoding utf8
    if (-not (Test-Path -LiteralPath $Path)) { throw 'check-install.ps1 wrote nothing' }
}

# TARN_TRACE=level,file=PATH, of the machine or of the camera service, names the log; the older file lies beside it under a longer name.
function Save-TextLog([string]$Path) {
    $setting = [Environment]::GetEnvironmentVariable('TARN_TRACE', 'Machine')
    $service = Get-Item -LiteralPath 'HKLM:\SYSTEM\CurrentControlSet\Services\FrameServer' -ErrorAction SilentlyContinue
    if (-not $setting -and $null -ne $service) {
        foreach ($line in @($service.GetValue('Environment', $null))) {
            if ($line -like 'TARN_TRACE=*') { $setting = $line.Substring(11) }
        }
    }
    if (-not $setting -or $setting -notmatch ',file=(.+)$') { throw 'TARN_TRACE names no file' }
    $log = $Matches[1]
    New-Item -ItemType Directory -Path $Path | Out-Null
    $stem = [IO.Path]::GetFileNameWithoutExtension($log)
    Copy-Item -Path (Join-Path (Split-Path -Parent $log) "$stem*") -Destination $Path
}

function Save-Crashes([string]$Path) {
    & wevtutil.exe epl Application $Path '/q:*[System[Provider[@Name="Application Error"] and (EventID=1000)]]'
    if ($LASTEXITCODE -ne 0) { throw "wevtutil failed with $LASTEXITCODE" }
}

$path = $ExecutionContext.SessionState.Path.GetUnresolvedProviderPathFromPSPath($Output)
New-Item -ItemType Directory -Path $Work | Out-Null
try {
    if ($Record) {
        Add-Part 'trace.etl' 'calls of the module and the camera pipeline; process names, machine and user name' {
            param($part) Save-Trace $part
        }
    }
    Add-Part 'install.json' 'the installation: device ids with serial number, registry values, files, services' {
        param($part) Save-Installation $part
    }
    Add-Part 'install.txt' 'what of it holds and what does not' { }
    Add-Part 'log' 'text log of the module; process paths and the machine name' { param($part) Save-TextLog $part }
    Add-Part 'crashes.evtx' 'records of all application crashes in the event log, with program names and paths' {
        param($part) Save-Crashes $part
    }
    Add-Part 'setupapi.dev.log' 'installations of all devices on this machine' {
        param($part) Copy-Item -LiteralPath "$env:windir\INF\setupapi.dev.log" -Destination $part
    }
    foreach ($source in $Recording) {
        Add-Part ('recording-' + (Split-Path -Leaf $source)) 'PICTURES: frames as the camera saw them' {
            param($part) Copy-Item -LiteralPath $source -Destination $part -Recurse
        }
    }
    $list = @("Contents of $(Split-Path -Leaf $path), made $([DateTime]::UtcNow.ToString('s'))Z", '') + @($Contents)
    [IO.File]::WriteAllLines((Join-Path $Work 'contents.txt'), [string[]]$list)
    $list | ForEach-Object { Write-Output $_ }
    if (-not $Yes -and (Read-Host "Write these to $path ? (y/n)") -ne 'y') {
        Write-Output 'Nothing was written.'
        exit 1
    }
    Compress-Archive -Path (Join-Path $Work '*') -DestinationPath $path -Force
    Write-Output "Archive: $path"
}
finally {
    Remove-Item -LiteralPath $Work -Recurse -Force
}
