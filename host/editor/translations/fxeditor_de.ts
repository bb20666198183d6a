<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>Attempt</name>
    <message>
        <source>find the file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no file name was given</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>name the plug-in&apos;s library file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>this is a folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>name the library file inside it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>there is no such file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>check the path</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>this is not a regular file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the file cannot be read</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>check its permissions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>load the library</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the file is shorter than its header says</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>copy or build it again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it was built with another version of the toolkit than this host, Qt %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>check that it is a plug-in built for this system and that the libraries it needs are installed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>compare the verification text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the library has no function qt_plugin_query_verification_data</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>name a plug-in of this host</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the library gives no text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the library was built for &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>make the root object</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the library has no function qt_plugin_instance</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the library gives no object</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>cast to the plug-in interface</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 does not offer &quot;%2&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>ask for the filter keys</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it offers no filters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a key is empty</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it offers &quot;%1&quot; twice</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>a filter &quot;%1&quot; is loaded already</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>load only one of the plug-ins that offer it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>make the filter &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the plug-in does not know its own key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>memory ran out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>close other programs and try again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it gives the same object as for another key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>register the filter &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is no valid filter type id</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>its type id %1 belongs to the filter &quot;%2&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>load only one of the two</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>its parameters were not accepted</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ChainPanel</name>
    <message>
        <source>Drag to change the order (Alt+Up, Alt+Down)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the picture after this filter (Return)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folds or unfolds the settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>More for this filter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Applied filters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Source</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the picture without any filter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Result</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shows the picture after all filters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No filters yet. Choose one under “Filters” and press “Add”.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CmdAddFilter</name>
    <message>
        <source>Add %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CmdMoveFilter</name>
    <message>
        <source>Move %1 up</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move %1 down</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CmdRemoveFilter</name>
    <message>
        <source>Remove %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ExportDialog</name>
    <message>
        <source>%1 s left</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 min %2 s left</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 h %2 min left</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Write to</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A folder, or a numbered sequence such as out_####.png. Files of the input are never overwritten.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The suffix decides the format: .png, .tif, .jpg and others. The input is never overwritten.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ready</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Export</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Starting the renderer…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stopping after the frames at work…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Write frames to</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Write to</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 of %2 frames</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancelled. The frames written so far are whole.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Done: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ExportProcess</name>
    <message>
        <source>%1 cannot be started (%2); install it beside this program</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The renderer ended unexpectedly; the frames written before are whole</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The renderer failed with code %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FxGuiImageFilter::Private</name>
    <message>
        <source>Switches the filter on or off; its settings stay</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Animates the settings: every edit becomes a keyframe of its frame</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Applies this filter one place earlier</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Applies this filter one place later</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Removes this filter</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>HkFilterManipulator</name>
    <message>
        <source>Add</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Applies this filter after the others</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>switch on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>switch off</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>animate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>stop animating</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>InfoPanel</name>
    <message>
        <source>Levels 0 to 255; the line is the picture before the filters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Histogram</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Before</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>After</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pixel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Projects (*.fxp)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Filters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Applied filters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>As opened</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>History</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Levels and pixel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Timeline</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open &amp;folder…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+Shift+O</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open &amp;recent</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace &amp;input…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Save project</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save project &amp;as…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Export…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+E</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Copy as command line</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+Shift+C</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>C&amp;lose</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch between version &amp;A and B</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>X</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Presets</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Paste &amp;filters from text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+Shift+V</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>F&amp;ilters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>F&amp;rames</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Play or stop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Next frame</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>P&amp;revious frame</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ne&amp;xt key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pre&amp;vious key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Make a key here</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Delete selected keys</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Copy selected keys</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pas&amp;te keys here</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Fit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+0</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;100 %</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ctrl+1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Picture alone</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Wipe line between before and after</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Before and after &amp;side by side</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Difference</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Objects in colours</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Hold B to see the picture before</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pa&amp;nels</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Theme</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;System</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Dark</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This cannot be opened</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The sample cannot be made</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>/sample.png</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 cannot be written; check the permissions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the project</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save changes?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save the changes to %1?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The project cannot be saved</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save project</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pictures, videos and projects (*)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open a folder of pictures</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open a project</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Apply the same filters to other pictures</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pictures, videos (*)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opened with remarks</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not everything in the project can be used here. Nothing of it is lost when you save.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The command is on the clipboard</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Try values…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Duplicate</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Copy as text</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Save as preset…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Reset to defaults</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: reset</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Re&amp;move</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The clipboard holds no filters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Paste filters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save as preset</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name of the preset</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is a preset “%1”. Replace it?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The preset cannot be saved</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The preset cannot be applied</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Apply preset %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Save all filters as preset…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Apply preset from file…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Apply preset</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Presets (*.fxpreset)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is nothing to render yet: open a picture and apply a filter.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>an unsaved project</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recover</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The editor ended unexpectedly while %1 had unsaved changes (%2).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recovering overwrites no file: you decide whether to save.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Recover</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Discard</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Later</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This cannot be recovered</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Duplicate %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>fxeditor[*]</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1[*] – fxeditor</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Version B</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Frame %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 × %2 pixels</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>grey</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>colour</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 ms</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MessageBar</name>
    <message>
        <source>Warnings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shown without filters: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PictureView</name>
    <message>
        <source>Picture</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Frame %1, %2 × %3 pixels</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing is open</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Before</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>After</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Difference × 4</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No objects to colour: the picture is not one of areas</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1/%1 size while dragging</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PluginLoader</name>
    <message>
        <source>it throws an exception: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it throws an exception</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>cannot load plug-in %1: %2: %3; %4</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>StartPage</name>
    <message>
        <source>%1 and %2 more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>What would you like to work on?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open something, or drop files and folders on this window.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open pictures or a video</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>One picture, several, or a video</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open a folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All its pictures as frames, in the order of their names</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open a project</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pictures with the filters that were saved for them</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try the sample picture</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It has something to do for every filter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Recent</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SweepDialog</name>
    <message>
        <source>Pictures to choose from</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try values – %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Parameter</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;And</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Click the best one: its values are set. Bold: the present values.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no other</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>How many values</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>values</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TimelinePanel</name>
    <message>
        <source>First frame (Home)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Previous frame (,)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Play or stop (Space)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next frame (.)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Last frame (End)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Current frame</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Previous key (Ctrl+,)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next key (Ctrl+.)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Make a key of the values here (K)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete the selected keys (Delete)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TimelineView</name>
    <message>
        <source>Timeline</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Press ◇ on an applied filter to animate it; each edit then makes a key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Objects</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>at most %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 here, at most %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move a key by %1 frames</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move %1 keys by %2 frames</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: add a key (frame %2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Frame %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No filter is animated: press ◇ on one first</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add a key (frame %1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No key is selected: click one, or draw a rectangle around several</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete a key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete %1 keys</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There is no lane for these keys: animate a filter first</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Paste keys (frame %1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Left out, for this filter has no such parameter: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>editor</name>
    <message>
        <source>Show version %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 object</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 objects</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>fxeditor</name>
    <message>
        <source>Applies image filters to pictures and sequences, with a preview.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The plug-in library, if not the one of this program</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>system, light or dark</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>A project, pictures, a numbered sequence (shot_####.png) or a folder</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
